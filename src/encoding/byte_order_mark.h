#pragma once

#include <array>
#include <cstddef>

namespace encoding {

inline constexpr std::array<unsigned char, 3> UTF8ByteOrderMark = {0xEF, 0xBB, 0xBF};
inline constexpr std::array<unsigned char, 2> UTF16BEByteOrderMark = {0xFE, 0xFF};
inline constexpr std::array<unsigned char, 2> UTF16LEByteOrderMark = {0xFF, 0xFE};

/// Where the text begins: after the mark if the range begins with it, else at `first`.
template <typename It, std::size_t size>
It skip_mark(It first, It last, std::array<unsigned char, size> const& mark) {
  It it = first;
  for (unsigned char byte : mark) {
    if (it == last || static_cast<unsigned char>(*it) != byte) return first;
    ++it;
  }
  return it;
}

}  // namespace encoding
