#pragma once

#include "platform/clusters.h"
#include "text/char_types.h"

namespace text {

/// Grapheme clusters within a line: the steps of carets, of selections, and of all that edits at
/// them. Units stay the measure of the buffer; these say at which of them a caret may stand. Next
/// to plain units an answer costs two comparisons.

/// Whether a unit is a cluster by itself next to others of its kind.
inline bool is_plain(char_t unit) {
  return unit < unicode::first_special_unit;
}

/// Whether a cluster begins at `column`, or the line ends there.
inline bool is_cluster_start(unit_view line, size_t column) {
  bool const is_inside = column != 0 && column < line.size();
  bool const is_next_to_plain_units =
      is_inside && is_plain(line[column - 1]) && is_plain(line[column]) && line[column] != u'\n';
  return !is_inside || is_next_to_plain_units || unicode::is_grapheme_break(line, column);
}

/// The end of the cluster that `column` is in or at the start of; the line's end there.
inline size_t next_cluster(unit_view line, size_t column) {
  return unicode::next_grapheme_break(line, column);
}

/// The start of the cluster that ends at `column` or holds it; 0 there.
inline size_t previous_cluster(unit_view line, size_t column) {
  return unicode::previous_grapheme_break(line, column);
}

/// `column`, or the end of the cluster that it is inside of.
inline size_t cluster_start_from(unit_view line, size_t column) {
  return is_cluster_start(line, column) ? column : next_cluster(line, column);
}

}  // namespace text
