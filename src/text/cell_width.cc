#include "text/cell_width.h"

#include <atomic>

namespace text {

namespace {

// Threads that search may measure, too.
std::atomic<bool> units_are_cells = false;

}  // namespace

bool counts_units_as_cells() {
  return units_are_cells.load(std::memory_order_relaxed);
}

void set_counts_units_as_cells(bool on) {
  units_are_cells.store(on, std::memory_order_relaxed);
}

measured_cluster measure_cluster(unit_view line, size_t column) {
  unicode::cluster const found = unicode::cluster_at(line, column);
  return {found.end, counts_units_as_cells() ? found.end - column : found.columns};
}

size_t cell_width(unit_view cluster) {
  return cluster.empty() ? 0 : measure_cluster(cluster, 0).cells;
}

}  // namespace text
