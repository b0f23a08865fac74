#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <iterator>
#include <map>
#include <type_traits>

#include "encoding/byte_order_mark.h"

/// The tests by which `estimate` tells charsets apart. All of them only look at the range.
namespace encoding {

/// How often each character occurs in a sample of text, and the size of that sample. No sample
/// is shipped: the map is empty and N is 0, so every score is a NaN, which beats nothing.
using character_weights = std::map<char16_t, float>;
extern character_weights const Probability;
extern std::uint32_t const N;

/// The score of a range of bytes or units: the weights of its elements above 127, divided by
/// the size of the sample.
template <typename It>
float probabilityFor(It first, It last, character_weights const& weights = Probability,
                     std::uint32_t sample_size = N) {
  using element = std::make_unsigned_t<std::iter_value_t<It>>;
  float sum = 0;
  for (; first != last; ++first) {
    auto const value = static_cast<element>(*first);
    if (value <= 127) continue;
    auto const it = weights.find(value);
    if (it != weights.end()) sum += it->second;
  }
  return sum / static_cast<float>(sample_size);
}

/// False if any byte lies in 0x80 to 0x9F, where Latin1 has control characters only.
template <typename It>
bool canBeLatin1(It first, It last) {
  return std::none_of(first, last, [](unsigned char byte) { return (byte & 0xE0) == 0x80; });
}

/// True if no byte has its top bit set.
template <typename It>
bool isASCII(It first, It last) {
  return std::none_of(first, last, [](unsigned char byte) { return byte & 0x80; });
}

/// 100 if the range is made of whole UTF-8 sequences, else 0. Lenient: sequences may have up to
/// six bytes, be longer than need be, and stand for surrogates or values above U+10FFFF.
template <typename It>
unsigned probabilityForUTF8(It first, It last) {
  first = skip_mark(first, last, UTF8ByteOrderMark);
  while (first != last) {
    auto const lead = static_cast<unsigned char>(*first);
    ++first;
    if (lead < 0x80) continue;
    int const length = std::countl_one(lead);
    if (length == 1 || length > 6) return 0;
    for (int i = 1; i < length; ++i, ++first) {
      if (first == last || (static_cast<unsigned char>(*first) & 0xC0) != 0x80) return 0;
    }
  }
  return 100;
}

/// 100 if the length is even and the range begins with the mark, else 0: text in UTF-16 without
/// a mark is not recognised.
template <typename It>
unsigned probabilityForUTF16BE(It first, It last) {
  bool const even = std::distance(first, last) % 2 == 0;
  return even && skip_mark(first, last, UTF16BEByteOrderMark) != first ? 100 : 0;
}

template <typename It>
unsigned probabilityForUTF16LE(It first, It last) {
  bool const even = std::distance(first, last) % 2 == 0;
  return even && skip_mark(first, last, UTF16LEByteOrderMark) != first ? 100 : 0;
}

}  // namespace encoding
