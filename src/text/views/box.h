#pragma once

#include <cstddef>

namespace text {

class selection;
class view;

/// How large a rectangle of text is: lines of the storage and visual columns.
struct rectangle_size {
  size_t lines = 0;
  size_t columns = 0;
};

/// The extent of a view's selection in hybrid coordinates: lines of the storage and visual columns
/// with tabs expanded. In column mode it is the rectangle and `last_line` is one past it; otherwise
/// the fields are the two ends of the text, and `last_line` is the line of the second.
struct box {
  size_t first_line = 0;
  size_t last_line = 0;
  size_t first_column = 0;
  size_t last_column = 0;
  bool reversed_columns = false;
  bool reversed_lines = false;

  /// In column mode.
  rectangle_size size() const { return {last_line - first_line, last_column - first_column}; }

  explicit box(text::view const* view);
  explicit box(text::selection const& selection);
};

}  // namespace text
