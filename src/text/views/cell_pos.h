#pragma once

#include <cstddef>

namespace text {

/// A line of the storage, and a visual column from the start of that line with tabs expanded,
/// unaffected by wrapping. Both from 0.
struct hybrid_pos {
  std::size_t line, column;
};

/// A row of a view, and a visual column from the start of that row. Both from 0.
struct row_pos {
  std::size_t row, column;
};

}  // namespace text
