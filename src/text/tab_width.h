#pragma once

#include <cstddef>

#include "text/char_types.h"

namespace text {

/// Where tabs end: at each multiple of so many columns, which is not 0. A type of its own, as it is
/// passed beside columns.
struct tab_stops {
  explicit constexpr tab_stops(size_t columns) : every(columns) {}
  size_t every;
};

/// The columns that a tab at `column` covers.
inline size_t tab_width(size_t column, tab_stops tabs) {
  return tabs.every - column % tabs.every;
}

/// The columns that `units` take when the first stands at column `start`: its cells for each
/// cluster (text/cell_width.h), and for a tab those up to the next tab stop. Plain units without
/// tabs are skipped at memory speed.
size_t expanded_width(unit_view units, size_t start, tab_stops tabs);

/// The columns of the spaces and tabs that a line begins with.
size_t indent_width(unit_view line, tab_stops tabs);

/// A unit of a run and the column at which it stands, and how far from there a column lies that was
/// sought: inside the tab at `unit`, or past the end of the run. 0 in other characters, which have
/// no place inside.
struct unit_column {
  size_t unit;
  size_t column;
  size_t rest = 0;
};

/// The first cluster of `units` that stands at `column` or covers it, when the first unit stands at
/// column `start`; the end of the run, with the column there, if they all end before.
unit_column unit_at_column(unit_view units, size_t start, size_t column, tab_stops tabs);

}  // namespace text
