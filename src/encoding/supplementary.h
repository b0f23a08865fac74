#pragma once

#include <cstdint>

#include "encoding/decoders.h"
#include "encoding/encoders.h"

/// UTF-8 for users who want characters above U+FFFF to survive: they are surrogate pairs in
/// the buffer and sequences of four bytes in the file.
///
/// Bytes to units to bytes is the identity, but for
///  - sequences longer than need be, which come back short,
///  - values above U+10FFFF (of four, five or six bytes), which keep their low 16 bits,
///  - a high and a low surrogate of three bytes each, next to one another: as units these are
///    the same pair as the sequence of four bytes, and come back as that,
///  - malformed input, which becomes U+FFFD.
/// `decoded::exact` tells whether a file holds any of these, so that its owner can refuse to
/// overwrite what would not come back. Lone surrogates of three bytes survive.
namespace encoding {

constexpr bool is_high_surrogate(char32_t value) {
  return value >> 10 == 0xD800 >> 10;
}
constexpr bool is_low_surrogate(char32_t value) {
  return value >> 10 == 0xDC00 >> 10;
}

constexpr char16_t high_surrogate(char32_t value) {
  return 0xD7C0 + (value >> 10);
}
constexpr char16_t low_surrogate(char32_t value) {
  return 0xDC00 | (value & 0x3FF);
}
constexpr char32_t joined_surrogates(char16_t high, char16_t low) {
  return 0x10000 + ((high & 0x3FFu) << 10) + (low & 0x3FFu);
}

/// As convert_UTF8ToUnicode, with a pair for each sequence of four bytes from U+10000 to U+10FFFF.
template <typename In, typename Out>
Out decode_utf8_with_pairs(In first, In last, Out out, bool* has_bom) {
  first = skip_mark_and_tell(first, last, UTF8ByteOrderMark, has_bom);
  for_each_utf8_sequence(first, last, [&out](std::uint32_t value, int length) {
    if (length == 4 && value >= 0x10000 && value <= 0x10FFFF) {
      *out++ = high_surrogate(value);
      *out++ = low_surrogate(value);
    } else {
      *out++ = static_cast<char16_t>(value);
    }
  });
  return out;
}

/// As convert_UnicodeToUTF8, with one sequence of four bytes for each pair of surrogates.
template <typename In, typename Out>
Out encode_utf8_with_pairs(In first, In last, Out out) {
  while (first != last) {
    char16_t const unit = *first;
    ++first;
    char32_t value = unit;
    if (is_high_surrogate(unit) && first != last && is_low_surrogate(*first)) {
      value = joined_surrogates(unit, *first);
      ++first;
    }
    out = put_utf8_sequence(value, out);
  }
  return out;
}

}  // namespace encoding
