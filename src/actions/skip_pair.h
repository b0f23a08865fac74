#pragma once

#include "text/char_types.h"

#include <cstddef>

namespace actions {

/// Walks from `first`, which is after an `open`, and stops after the `close` that belongs to it,
/// or at `last`. Over reverse iterators, with the units given the other way round, it walks back
/// to the opening one. `found` says whether there was one.
template <typename It>
It skip_pair(It first, It last, text::char_t open, text::char_t close, bool& found) {
  std::size_t depth = 1;
  found = false;
  while (first != last && !found) {
    text::char_t const unit = *first;
    ++first;
    if (unit == close)
      found = --depth == 0;
    else if (unit == open)
      ++depth;
  }
  return first;
}

}  // namespace actions
