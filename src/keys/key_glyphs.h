#pragma once

#include <string>
#include <string_view>

namespace keys {

/// The sign (UTF-8) under which a key or modifier is shown, such as "return"; U+FFFD for a name
/// that isn't known.
std::string glyph_named(std::string_view name);

/// The name of a key that has one ("left" for U+F702); empty for all other keys.
std::string_view name_of_key(char32_t key);

}  // namespace keys
