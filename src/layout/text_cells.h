#pragma once

#include "text/tab_width.h"

#include <cstddef>
#include <string_view>
#include <vector>

/// How the characters of a row fall into the cells of the fixed-pitch grid: as wide as
/// text/cell_width.h says, and a tab up to the next tab stop.
namespace text_cells {

enum class kind {
  run,        // units that have a plain glyph of one cell each
  cluster,    // one user-perceived character, to be fitted into its cells
  script,     // letters that run from right to left, and join: shaped and fitted as a whole
  tab,        // one tab
  control,    // one control character
  unprinted,  // one character without cells that nothing carries, such as a zero width space
  surrogate   // one lone surrogate, which has no glyph
};

struct piece {
  text_cells::kind kind;
  std::size_t first, last;  // half open, units of the text given
  std::size_t column;       // of its left edge
  std::size_t width;        // in columns
  friend bool operator==(piece const&, piece const&) = default;
};

/// Cuts `text`, which starts at visual column `column`, into pieces in order. Time is linear in the
/// text, so callers pass what can be seen and not whole lines.
std::vector<piece> pieces_of(std::u16string_view text, std::size_t column, text::tab_stops tabs);

}  // namespace text_cells
