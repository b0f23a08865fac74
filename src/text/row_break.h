#pragma once

#include <optional>

#include "text/char_types.h"
#include "text/cluster.h"

namespace text {

/// Where a row of a wrapped line begins. What stands before a unit doesn't matter to the rows
/// from there on, so a line can be wrapped again from any row, up to where old rows begin likewise.
struct row_start {
  size_t unit = 0;
  bool hard = false;  ///< the row continues with a word that was cut; its first cell isn't counted
  size_t column = 0;  ///< where the row's text begins

  bool operator==(row_start const&) const = default;
};

/// The end of a row that isn't the last of its line.
struct row_break {
  size_t last;     ///< where the row ends; the cluster there belongs to no row
  row_start next;  ///< in the column of the row before
};

/// Where the row of `line` from `start` is broken, or nothing if it reaches the end of the line.
/// A row is too long once a cluster other than white space reaches beyond column `width`. It then
/// ends before the last white space in it (a soft break); without any it is cut before the
/// cluster before (a hard break). White space alone is never too long, and a row takes one cluster
/// at least, also where `start.column` is beyond the width. A `width` of 0 counts as 1. Takes time
/// in proportion to the row, a fraction of a nanosecond a unit.
std::optional<row_break> find_row_break(unit_view line, row_start start, size_t width,
                                        size_t tab_size);

inline bool is_blank(char_t unit) {
  return unit == u' ' || unit == u'\t';
}

/// Whether the unit at `column` < line.size() is white space of its own, and not a part of a
/// cluster, as a blank with an accent is.
inline bool is_lone_blank(unit_view line, size_t column) {
  return is_blank(line[column]) && is_cluster_start(line, column) &&
         is_cluster_start(line, column + 1);
}

}  // namespace text
