#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace text {

/// One UTF-16 code unit. All lengths and columns of positions count these. What is one character to
/// a reader is found by text/cluster.h, and how wide it is by text/cell_width.h.
using char_t = char16_t;

/// A borrowed, contiguous run of units; line ends are `\n`.
using unit_view = std::basic_string_view<char_t>;

}  // namespace text
