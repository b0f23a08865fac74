#pragma once

#include <string>

#include "text/char_types.h"

namespace actions {

/// What is done to whole lines of a text; line ends stay where they are, so a last line without one
/// has none afterwards either.

/// In the order of the code points, as `LC_ALL=C sort` has it.
std::u16string sorted_lines(text::unit_view text);
/// Each line once, where it first stood.
std::u16string unique_lines(text::unit_view text);
std::u16string reversed_lines(text::unit_view text);
/// One line, also of what follows the last line end: a line end and the blanks round it become one
/// blank, or nothing next to an empty line.
std::u16string joined_lines(text::unit_view text);

}  // namespace actions
