#include "text/views/box.h"

#include <algorithm>

#include "text/views/view.h"

namespace text {

box::box(text::view const* view) : box(view->selection) {}

box::box(text::selection const& selection) {
  size_t const line1 = line_before_filters(selection.first_mark);
  size_t const line2 = line_before_filters(selection.last_mark);
  size_t const column1 = column_before_wrap(selection.first_mark);
  size_t const column2 = column_before_wrap(selection.last_mark);
  if (selection.column_mode) {
    first_line = std::min(line1, line2);
    last_line = std::max(line1, line2) + 1;
    first_column = std::min(column1, column2);
    last_column = std::max(column1, column2);
    reversed_lines = line2 < line1;
    reversed_columns = column2 < column1;
  } else {
    reversed_columns = selection.last_mark < selection.first_mark;
    first_line = reversed_columns ? line2 : line1;
    first_column = reversed_columns ? column2 : column1;
    last_line = reversed_columns ? line1 : line2;
    last_column = reversed_columns ? column1 : column2;
  }
}

}  // namespace text
