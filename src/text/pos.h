#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>

namespace text {

/// A line and a column (in units, both from 0) in the coordinates of the caller: a storage,
/// or one filter of a view.
struct pos {
  uint32_t line = 0;
  uint32_t column = 0;

  pos() = default;
  pos(size_t at_line, size_t at_column)
      : line(static_cast<uint32_t>(at_line)), column(static_cast<uint32_t>(at_column)) {}

  auto operator<=>(pos const&) const = default;
};

}  // namespace text
