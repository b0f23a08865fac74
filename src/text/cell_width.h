#pragma once

#include "text/cluster.h"

namespace text {

/// The cells of the grid that characters take. By default those of a terminal: two for ideographs
/// and emoji, none for what is drawn upon others, one for the rest. A user may prefer one for each
/// unit, which is how files of fixed columns are sometimes counted.

/// How columns are counted in this process. Views that exist have to be measured again
/// (`view::follow_cell_widths`) when it has changed. Main thread.
bool counts_units_as_cells();
void set_counts_units_as_cells(bool on);

/// A cluster of a line, its end and its cells.
struct measured_cluster {
  size_t end;
  size_t cells;
};

/// The cluster that begins at `column`, which is no tab and not the line's end.
measured_cluster measure_cluster(unit_view line, size_t column);

/// The cells of one cluster, which is no tab.
size_t cell_width(unit_view cluster);

}  // namespace text
