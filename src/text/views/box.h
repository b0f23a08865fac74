#pragma once

#include <cstddef>

namespace text {

class selection;
class view;

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

  explicit box(text::view const* view);
  explicit box(text::selection const& selection);
};

}  // namespace text
