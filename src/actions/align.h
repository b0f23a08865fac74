#pragma once

#include <cstddef>
#include <string>

#include "text/char_types.h"

namespace actions {

enum class alignment { left, center, right, justified };

/// Each line of `text` without the blanks at its ends, moved within `width` columns; one that is
/// wider stays as it is. A `tab_size` is not 0.
std::u16string aligned(text::unit_view text, alignment how, std::size_t width,
                       std::size_t tab_size);

/// The row with its gaps between words widened to `width` columns, the wider ones spread evenly. A
/// row without gaps, or as wide already, stays as it is; so do the blanks it begins with.
std::u16string justified_row(text::unit_view row, std::size_t width, std::size_t tab_size);

}  // namespace actions
