#pragma once

#include <cstddef>

#include "text/char_types.h"

namespace text {

/// The columns that a tab at `column` covers.
inline size_t tab_width(size_t column, size_t tab_size) {
  return tab_size - column % tab_size;
}

/// The columns that `units` take when the first stands at column `start`: 1 for each, a tab up to
/// the next tab stop. Runs without tabs are skipped at memory speed. `tab_size` is not 0.
size_t expanded_width(unit_view units, size_t start, size_t tab_size);

/// The columns of the spaces and tabs that a line begins with.
size_t indent_width(unit_view line, size_t tab_size);

/// A unit of a run and the column at which it stands.
struct unit_column {
  size_t unit;
  size_t column;
};

/// The unit of `units` that covers `column`, when the first stands at column `start`; the end of
/// the run, with the column there, if they all end before.
unit_column unit_at_column(unit_view units, size_t start, size_t column, size_t tab_size);

}  // namespace text
