#pragma once

#include "text/char_types.h"

#include <cstddef>
#include <string>

/// The indentation of a piece of text: widths are columns, with tabs up to the next tab stop. Lines
/// end with `\n`; a tab size is not 0.
namespace actions::indent {

/// The least indentation of the lines that hold more than blanks; the largest value without any.
std::size_t level(text::unit_view text, std::size_t tab_size);
/// How many of the blanks that a line begins with lie within `amount` columns.
std::size_t skip(text::unit_view line, std::size_t amount, std::size_t tab_size);
/// Without the first `amount` columns of each line, as far as these are blanks.
std::u16string cut_from_each_line(text::unit_view text, std::size_t amount, std::size_t tab_size);
/// With `prefix` before each line that isn't empty, but for the first.
std::u16string prefix_each_line(text::unit_view text, text::unit_view prefix);

/// Blanks of `width` columns from a line's start: tabs with the rest in spaces, or spaces alone.
std::u16string blanks(std::size_t width, std::size_t tab_size, bool spaces);

}  // namespace actions::indent
