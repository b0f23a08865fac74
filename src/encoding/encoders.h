#pragma once

#include <bit>
#include <cstddef>

#include "encoding/byte_order_mark.h"
#include "encoding/tables.h"

/// From 16-bit units to bytes, one function a charset. The input is any range of units; bytes go
/// to `out`, whose new position is given back. The 8-bit charsets lose what they don't have, and
/// a save finds that out by decoding the bytes again (or by `first_lost_unit`).
namespace encoding {

/// A unit that ASCII lacks keeps its low 7 bits.
template <typename In, typename Out>
Out convert_UnicodeToASCII(In first, In last, Out out) {
  for (; first != last; ++first) *out++ = static_cast<unsigned char>(*first & 0x7F);
  return out;
}

/// A unit that Latin1 lacks keeps its low 8 bits.
template <typename In, typename Out>
Out convert_UnicodeToLatin1(In first, In last, Out out) {
  for (; first != last; ++first) *out++ = static_cast<unsigned char>(*first);
  return out;
}

/// `value`, at most U+10FFFF, as a sequence of one to four bytes.
template <typename Out>
Out put_utf8_sequence(char32_t value, Out out) {
  if (value < 0x80) {
    *out++ = static_cast<unsigned char>(value);
    return out;
  }
  if (value < 0x800) {
    *out++ = static_cast<unsigned char>(0xC0 | value >> 6);
  } else {
    if (value < 0x10000) {
      *out++ = static_cast<unsigned char>(0xE0 | value >> 12);
    } else {
      *out++ = static_cast<unsigned char>(0xF0 | value >> 18);
      *out++ = static_cast<unsigned char>(0x80 | (value >> 12 & 0x3F));
    }
    *out++ = static_cast<unsigned char>(0x80 | (value >> 6 & 0x3F));
  }
  *out++ = static_cast<unsigned char>(0x80 | (value & 0x3F));
  return out;
}

/// Every unit by itself, so surrogates have three bytes each. Writes no mark.
template <typename In, typename Out>
Out convert_UnicodeToUTF8(In first, In last, Out out) {
  for (; first != last; ++first) out = put_utf8_sequence(static_cast<char16_t>(*first), out);
  return out;
}

template <std::endian order, typename Out>
Out put_utf16_unit(char16_t unit, Out out) {
  unsigned char const high = unit >> 8;
  unsigned char const low = unit & 0xFF;
  *out++ = order == std::endian::big ? high : low;
  *out++ = order == std::endian::big ? low : high;
  return out;
}

/// Text in UTF-16 always begins with the mark.
template <std::endian order, typename In, typename Out>
Out put_utf16_text(In first, In last, Out out) {
  out = put_utf16_unit<order>(u'\uFEFF', out);
  for (; first != last; ++first) out = put_utf16_unit<order>(*first, out);
  return out;
}

template <typename In, typename Out>
Out convert_UnicodeToUTF16BE(In first, In last, Out out) {
  return put_utf16_text<std::endian::big>(first, last, out);
}

template <typename In, typename Out>
Out convert_UnicodeToUTF16LE(In first, In last, Out out) {
  return put_utf16_text<std::endian::little>(first, last, out);
}

/// Units up to `direct` are the bytes of their value; others are looked up, "?" where absent.
template <typename In, typename Out>
Out convert_by_map(In first, In last, Out out, unit_to_byte const& map, char16_t direct) {
  for (; first != last; ++first) {
    char16_t const unit = *first;
    if (unit <= direct) {
      *out++ = static_cast<unsigned char>(unit);
    } else {
      auto const it = map.find(unit);
      *out++ = it != map.end() ? it->second : static_cast<unsigned char>('?');
    }
  }
  return out;
}

template <typename In, typename Out>
Out convert_UnicodeToMacRoman(In first, In last, Out out) {
  return convert_by_map(first, last, out, unicode_to_mac_roman(), 0x7F);
}

/// U+0080 to U+009F go out unchanged, though these bytes stand for other characters.
template <typename In, typename Out>
Out convert_UnicodeToCP1252(In first, In last, Out out) {
  return convert_by_map(first, last, out, unicode_to_cp1252(), 0xFF);
}

}  // namespace encoding
