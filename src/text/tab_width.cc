#include "text/tab_width.h"

#include <algorithm>

#include "text/unit_search.h"

namespace text {

size_t expanded_width(unit_view units, size_t start, size_t tab_size) {
  char_t const* at = units.data();
  char_t const* const last = at + units.size();
  size_t column = start;
  while (true) {
    char_t const* const tab = find_unit(at, last, u'\t');
    column += static_cast<size_t>(tab - at);
    if (tab == last) return column - start;
    column += tab_width(column, tab_size);
    at = tab + 1;
  }
}

size_t indent_width(unit_view line, size_t tab_size) {
  auto const text = std::min(line.find_first_not_of(u" \t"), line.size());
  return expanded_width(line.substr(0, text), 0, tab_size);
}

unit_column unit_at_column(unit_view units, size_t start, size_t column, size_t tab_size) {
  char_t const* const first = units.data();
  char_t const* const last = first + units.size();
  char_t const* at = first;
  size_t here = start;
  while (at != last && here < column) {
    char_t const* const tab = find_unit(at, last, u'\t');
    auto const run = static_cast<size_t>(tab - at);
    if (column < here + run) return {static_cast<size_t>(at - first) + column - here, column};
    here += run;
    at = tab;
    if (at == last || column < here + tab_width(here, tab_size)) break;
    here += tab_width(here, tab_size);
    ++at;
  }
  return {static_cast<size_t>(at - first), here};
}

}  // namespace text
