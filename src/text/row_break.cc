#include "text/row_break.h"

#include <algorithm>

#include "text/tab_width.h"

namespace text {

namespace {

/// The first unit from `start` on that stands at column `width` or beyond, or the line's end.
size_t unit_beyond(unit_view line, row_start start, size_t width, size_t tab_size) {
  size_t const counted = start.unit + (start.hard ? 1 : 0);
  // Each unit takes a column at least, so no more of the line is looked at.
  unit_view const window = line.substr(counted, width);
  unit_column const found = unit_at_column(window, 0, width, tab_size);
  bool const in_tab = found.column < width && found.unit < window.size();
  return counted + found.unit + (in_tab ? 1 : 0);
}

}  // namespace

std::optional<row_break> find_row_break(unit_view line, row_start start, size_t width,
                                        size_t tab_size) {
  size_t beyond = unit_beyond(line, start, std::max<size_t>(width, 1), tab_size);
  while (beyond < line.size() && is_blank(line[beyond])) ++beyond;
  if (beyond == line.size()) return std::nullopt;
  for (size_t at = beyond - 1; at > start.unit; --at)
    if (is_blank(line[at])) return row_break{at, {at + 1, false}};
  return row_break{beyond - 1, {beyond, true}};
}

}  // namespace text
