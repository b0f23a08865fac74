#include "text/row_break.h"

#include <algorithm>

#include "text/cell_width.h"
#include "text/tab_width.h"

namespace text {

namespace {

/// Where the first cluster begins that reaches beyond column `width`, or the line's end. Without a
/// cluster that was counted it is the end of the first.
size_t unit_beyond(unit_view line, row_start start, size_t width, size_t tab_size) {
  size_t const first = std::min(start.unit, line.size());
  size_t counted = first, column = start.column;
  if (start.hard && first != line.size()) {
    counted = next_cluster(line, first);
    size_t const cells = cell_width(line.substr(first, counted - first));
    column += std::max<size_t>(cells, 1) - 1;
  }
  // Most clusters take a column at least, so most often no more of the line is looked at.
  size_t at = counted;
  bool in_tab = false;
  for (size_t ahead = width;; ahead *= 2) {
    bool const is_near = line.size() - counted <= ahead;
    size_t const stop = is_near ? line.size() : cluster_start_from(line, counted + ahead);
    unit_column const found =
        unit_at_column(line.substr(counted, stop - counted), column, width, tab_stops(tab_size));
    at = counted + found.unit;
    in_tab = found.column < width && at < stop && line[at] == u'\t';
    if (in_tab) ++at;
    if (at < stop || in_tab || found.column >= width || stop == line.size()) break;
  }
  while (!in_tab && at < line.size() && !is_plain(line[at])) {
    measured_cluster const next = measure_cluster(line, at);
    if (next.cells != 0) break;
    at = next.end;
  }
  return at > first || at == line.size() ? at : next_cluster(line, first);
}

}  // namespace

std::optional<row_break> find_row_break(unit_view line, row_start start, size_t width,
                                        size_t tab_size) {
  size_t beyond = unit_beyond(line, start, std::max<size_t>(width, 1), tab_size);
  while (beyond < line.size() && is_lone_blank(line, beyond)) ++beyond;
  if (beyond == line.size()) return std::nullopt;
  for (size_t at = beyond - 1; at > start.unit; --at)
    if (is_lone_blank(line, at)) return row_break{at, {at + 1, false, start.column}};
  return row_break{previous_cluster(line, beyond), {beyond, true, start.column}};
}

}  // namespace text
