#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>

#include "encoding/byte_order_mark.h"
#include "encoding/tables.h"

/// From bytes to 16-bit units, one function a charset. The input is any forward range of bytes,
/// signed or not; units go to `out`, whose new position is given back. `has_bom` may be null; it
/// is set when a mark was skipped and left alone otherwise. No input fails.
namespace encoding {

/// ASCII and Latin1: every byte is the unit of that value.
template <typename In, typename Out>
Out dummy_copy(In first, In last, Out out, bool*) {
  for (; first != last; ++first) *out++ = static_cast<unsigned char>(*first);
  return out;
}

/// One value per UTF-8 sequence goes to `emit(value, length)`, with U+FFFD for each continuation
/// byte without a lead and each sequence cut short; the byte that cuts it is read again as the
/// start of the next. Like the test by which UTF-8 is recognised it takes sequences of up to six
/// bytes and longer than need be.
template <typename In, typename Emit>
void for_each_utf8_sequence(In first, In last, Emit emit) {
  while (first != last) {
    auto const lead = static_cast<unsigned char>(*first);
    ++first;
    int const length = std::min(std::countl_one(lead), 6);
    if (length == 0) {
      emit(std::uint32_t{lead}, 1);
      continue;
    }
    if (length == 1) {
      emit(std::uint32_t{replacement_character}, 0);
      continue;
    }
    std::uint32_t value = lead & (0x7F >> length);
    int missing = length - 1;
    for (; missing && first != last; --missing, ++first) {
      auto const byte = static_cast<unsigned char>(*first);
      if ((byte & 0xC0) != 0x80) break;
      value = value << 6 | (byte & 0x3F);
    }
    if (missing) {
      emit(std::uint32_t{replacement_character}, 0);
    } else {
      emit(value, length);
    }
  }
}

template <typename In>
In skip_mark_and_tell(In first, In last, auto const& mark, bool* has_bom) {
  In const text = skip_mark(first, last, mark);
  if (has_bom && text != first) *has_bom = true;
  return text;
}

/// Each sequence becomes one unit, so a value above U+FFFF keeps its low 16 bits only: the units
/// of the buffer are characters. See supplementary.h for the way that keeps them.
template <typename In, typename Out>
Out convert_UTF8ToUnicode(In first, In last, Out out, bool* has_bom) {
  first = skip_mark_and_tell(first, last, UTF8ByteOrderMark, has_bom);
  for_each_utf8_sequence(
      first, last, [&out](std::uint32_t value, int) { *out++ = static_cast<char16_t>(value); });
  return out;
}

/// Pairs of bytes become units, a lone last byte is dropped.
template <std::endian order, typename In, typename Out>
Out copy_byte_pairs(In first, In last, Out out) {
  while (first != last) {
    unsigned const a = static_cast<unsigned char>(*first);
    if (++first == last) break;
    unsigned const b = static_cast<unsigned char>(*first);
    ++first;
    *out++ = static_cast<char16_t>(order == std::endian::big ? a << 8 | b : b << 8 | a);
  }
  return out;
}

template <typename In, typename Out>
Out convert_UTF16BEToUnicode(In first, In last, Out out, bool* has_bom) {
  first = skip_mark_and_tell(first, last, UTF16BEByteOrderMark, has_bom);
  return copy_byte_pairs<std::endian::big>(first, last, out);
}

template <typename In, typename Out>
Out convert_UTF16LEToUnicode(In first, In last, Out out, bool* has_bom) {
  first = skip_mark_and_tell(first, last, UTF16LEByteOrderMark, has_bom);
  return copy_byte_pairs<std::endian::little>(first, last, out);
}

template <typename In, typename Out>
Out convert_MacRomanToUnicode(In first, In last, Out out, bool*) {
  for (; first != last; ++first) {
    auto const byte = static_cast<unsigned char>(*first);
    *out++ = byte < 0x80 ? char16_t{byte} : MacRomanToUnicodeTable[byte - 0x80];
  }
  return out;
}

template <typename In, typename Out>
Out convert_CP1252ToUnicode(In first, In last, Out out, bool*) {
  auto const& table = cp1252_to_unicode();
  for (; first != last; ++first) {
    auto const byte = static_cast<unsigned char>(*first);
    *out++ = (byte & 0xE0) == 0x80 ? table[byte - 0x80] : char16_t{byte};
  }
  return out;
}

}  // namespace encoding
