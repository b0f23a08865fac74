#pragma once

#include <algorithm>
#include <vector>

#include "text/tab_width.h"

namespace text {

/// A copy of `units` with each tab written as spaces up to the next tab stop. The first unit, and
/// the first of each further line, stands at visual column `start_column`.
inline std::vector<char_t> convert_tabs_to_spaces(unit_view units, size_t start_column,
                                                  tab_stops tabs) {
  std::vector<char_t> result;
  size_t column = start_column;
  while (!units.empty()) {
    size_t const length = std::min(units.find_first_of(u"\t\n"), units.size());
    result.insert(result.end(), units.begin(), units.begin() + static_cast<std::ptrdiff_t>(length));
    column += expanded_width(units.substr(0, length), column, tabs);
    units.remove_prefix(length);
    if (units.empty()) break;
    if (units.front() == u'\t') {
      result.insert(result.end(), tab_width(column, tabs), u' ');
      column += tab_width(column, tabs);
    } else {
      result.push_back(u'\n');
      column = start_column;
    }
    units.remove_prefix(1);
  }
  return result;
}

}  // namespace text
