#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace text {

/// One UTF-16 code unit. All lengths and columns of the text core count these; surrogate pairs and
/// combining marks have no meaning here.
using char_t = char16_t;

/// A borrowed, contiguous run of units; line ends are `\n`.
using unit_view = std::basic_string_view<char_t>;

}  // namespace text
