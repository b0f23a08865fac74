#pragma once

#include <array>
#include <cstdint>

#include "regex/traits.h"

namespace regex {

/// What is known of where a match can begin, for skipping over text without running the machine.
struct first_units {
  enum class place : std::uint8_t { anywhere, line_start, text_start };

  place begins_at = place::anywhere;
  bool may_be_empty = true;  // then the members below are of no use
  std::array<std::uint64_t, 2> ascii{};
  bool beyond_ascii = false;  // any unit from 128 on will do
  bool word = false, not_word = false;

  template <class T>
  bool contain(T c) const {
    unit_t const u = to_unit(c);
    if (u < 128 ? (ascii[u >> 6] >> (u & 63) & 1) != 0 : beyond_ascii) return true;
    if (word || not_word) return traits<T>::is_word(c) ? word : not_word;
    return false;
  }
};

}  // namespace regex
