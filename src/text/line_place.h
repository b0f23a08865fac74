#pragma once

#include <cstddef>

namespace text {

/// A place in a text as people name it, and as other programs do.
struct line_place {
  std::size_t line = 0;    ///< from 1
  std::size_t column = 0;  ///< in units, from 1; 0 when none was given

  friend bool operator==(line_place const&, line_place const&) = default;
};

}  // namespace text
