#include "text/tab_width.h"

#include <algorithm>

#include "text/cell_width.h"
#include "text/unit_search.h"

namespace text {

namespace {

/// The first tab, or unit that isn't plain, from `at` on; the end if there is none.
size_t find_tab_or_special(unit_view units, size_t at) {
  if (at != units.size() && !is_plain(units[at])) return at;
  char_t const* const last = units.data() + units.size();
  return static_cast<size_t>(
      find_unit_or_above(units.data() + at, last, u'\t', unicode::first_special_unit) -
      units.data());
}

}  // namespace

size_t expanded_width(unit_view units, size_t start, tab_stops tabs) {
  size_t const length = units.size();
  size_t at = 0, column = start;
  while (true) {
    size_t const stop = find_tab_or_special(units, at);
    column += stop - at;
    if (stop == length) return column - start;
    if (units[stop] == u'\t') {
      column += tab_width(column, tabs);
      at = stop + 1;
      continue;
    }
    // The plain unit before may be the first of the cluster.
    at = stop == at ? stop : stop - 1;
    column -= stop - at;
    do {
      measured_cluster const measured = measure_cluster(units, at);
      column += measured.cells;
      at = measured.end;
    } while (at != length && !is_plain(units[at]));
  }
}

size_t indent_width(unit_view line, tab_stops tabs) {
  auto const text = std::min(line.find_first_not_of(u" \t"), line.size());
  return expanded_width(line.substr(0, text), 0, tabs);
}

unit_column unit_at_column(unit_view units, size_t start, size_t column, tab_stops tabs) {
  size_t const length = units.size();
  size_t at = 0, here = start;
  while (at != length && here < column) {
    size_t stop = find_tab_or_special(units, at);
    bool const is_special = stop != length && units[stop] != u'\t';
    if (is_special && stop != at) --stop;  // it may be the first of a cluster
    size_t const run = stop - at;
    if (column < here + run) return {at + column - here, column};
    here += run;
    at = stop;
    if (at == length) break;
    if (!is_special) {
      size_t const width = tab_width(here, tabs);
      if (column < here + width) break;
      here += width;
      ++at;
    } else if (here < column) {
      measured_cluster const measured = measure_cluster(units, at);
      if (column < here + measured.cells) return {at, here};
      here += measured.cells;
      at = measured.end;
    }
  }
  return {at, here, column > here ? column - here : 0};
}

}  // namespace text
