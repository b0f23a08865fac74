#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "layout/text_cells.h"
#include "styles/scope_style.h"
#include "text/views/cell_pos.h"

namespace layout {
class drawn_text;

/// One row of text as it is drawn: the units of the columns that are looked at, with what an input
/// method composes among them, cut into cells and into styles. Indices count `units`.
struct row_text {
  struct span {
    std::size_t first;  ///< up to the next one or the end
    styles::drawn_style style;
  };

  std::u16string units;
  std::vector<text_cells::piece> pieces;
  std::vector<span> spans;                        ///< in order, the first one at 0
  std::size_t marked_first = 0, marked_last = 0;  ///< half open, the composed text
  std::size_t column = 0;                         ///< of the first unit
  bool ends_here = false;                         ///< the line's end comes right after the units
  /// What the line's end, or the unit with which the next row begins, lies on. Nothing when it
  /// isn't looked at.
  std::optional<platform::color> background_after;

  styles::drawn_style const& style_at(std::size_t index) const { return span_at(index)->style; }
  std::size_t end_of_style(std::size_t index) const {
    auto const next = span_at(index) + 1;
    return next == spans.end() ? units.size() : next->first;
  }
  bool is_marked(std::size_t index) const { return marked_first <= index && index < marked_last; }
  /// `units.size()` has one, too.
  std::size_t column_of(std::size_t index) const;

 private:
  std::vector<span>::const_iterator span_at(std::size_t index) const;
};

/// A row's text from one column up to another, and a little more. The view must show a document, of
/// whose storage the mutex is held.
row_text visible_text(drawn_text const& text, text::row_pos const& first, std::size_t last_column);

}  // namespace layout
