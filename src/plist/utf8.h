#pragma once

#include <cstddef>
#include <string_view>

namespace plist {

/// The bytes of the character that `text`, not empty, begins with; 0 if it is no UTF-8: an overlong
/// form, a surrogate, beyond U+10FFFF, cut short.
std::size_t utf8_length(std::string_view text);

bool is_utf8(std::string_view text);

}  // namespace plist
