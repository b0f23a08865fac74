#pragma once

#include <algorithm>
#include <cstddef>

namespace text {

/// Copies a sequence of units with each tab written as spaces up to the next tab stop. The first
/// unit, and the first of each further line, stands at visual column `start_column`. Returns the
/// end of the output.
template <typename First, typename Out>
Out convert_tabs_to_spaces(First first, First last, Out out, size_t tab_size, size_t start_column) {
  size_t column = start_column;
  for (; first != last; ++first) {
    if (*first == '\t') {
      size_t const width = tab_size - column % tab_size;
      out = std::fill_n(out, width, ' ');
      column += width;
    } else {
      *out++ = *first;
      column = *first == '\n' ? start_column : column + 1;
    }
  }
  return out;
}

}  // namespace text
