#include "encoding/decode_in_place.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstring>

#include "encoding/byte_order_mark.h"
#include "encoding/lanes.h"
#include "encoding/library_charset.h"
#include "encoding/supplementary.h"
#include "encoding/tables.h"
#include "encoding/utf8_blocks.h"

// A file of 100 MB should open in little more than the time to copy it, and should not need a
// second block of that size. Text is mostly runs of ASCII, which are widened 16 bytes at a time,
// and the rest is decoded by straight code for well-formed sequences. The generic decoders say
// what the result must be.
//
// With i bytes read of n, the units written so far end at byte 2i of the block at most, and the
// bytes not yet read begin at n + i. So as long as n - i >= 32 there are 32 bytes of room, and
// the loops below may write 16 units before they know how many are good.

namespace encoding {
namespace {

constexpr std::ptrdiff_t slack = 32;

struct cursor {
  unsigned char const* in;
  unsigned char const* end;
  char16_t* out;
  bool exact = true;

  std::ptrdiff_t left() const { return end - in; }
};

bool is_continuation(unsigned char byte) {
  return (byte & 0xC0) == 0x80;
}

template <std::size_t size>
bool skip_mark(cursor& c, std::array<unsigned char, size> const& mark) {
  unsigned char const* const text = encoding::skip_mark(c.in, c.end, mark);
  bool const found = text != c.in;
  c.in = text;
  return found;
}

// --- 8-bit charsets ---

/// Bytes as units of the same value; gives whether all of them were ASCII.
bool widen_all(cursor& c) {
  unsigned high = 0;
  for (; c.left() >= 16; c.in += 16, c.out += 16) high |= lanes::widen(c.out, c.in);
  for (; c.in != c.end; ++c.in) {
    high |= *c.in & 0x80;
    *c.out++ = *c.in;
  }
  return !high;
}

/// Bytes above 0x7F by a function, the others as they are.
template <typename HighByte>
void decode_8bit(cursor& c, HighByte unit_for) {
  while (c.left() >= slack) {
    unsigned high = lanes::widen(c.out, c.in);
    for (; high; high &= high - 1) {
      char16_t& unit = c.out[std::countr_zero(high)];
      unit = unit_for(static_cast<unsigned char>(unit));
    }
    c.in += 16;
    c.out += 16;
  }
  for (; c.in != c.end; ++c.in) *c.out++ = *c.in < 0x80 ? char16_t{*c.in} : unit_for(*c.in);
}

void decode_mac_roman(cursor& c) {
  decode_8bit(c, [](unsigned char byte) { return MacRomanToUnicodeTable[byte - 0x80]; });
}

void decode_cp1252(cursor& c) {
  auto const& table = cp1252_to_unicode();
  decode_8bit(c, [&](unsigned char byte) {
    if (byte >= 0xA0) return char16_t{byte};
    char16_t const unit = table[byte - 0x80];
    c.exact &= unit != u'?';
    return unit;
  });
}

// --- UTF-16 ---

template <std::endian order>
void decode_utf16(cursor& c) {
  if (c.left() % 2) {
    c.exact = false;
    --c.end;
  }
  std::size_t const units = c.left() / 2;
  if (order == std::endian::native) {
    std::memmove(c.out, c.in, 2 * units);
    c.out += units;
    return;
  }
  for (; c.left() >= 16; c.in += 16, c.out += 8) lanes::swap_bytes(c.out, c.in);
  c.out = copy_byte_pairs<order>(c.in, c.end, c.out);
}

// --- UTF-8 ---

constexpr int shortest_length(std::uint32_t value) {
  return value < 0x80 ? 1 : value < 0x800 ? 2 : value < 0x10000 ? 3 : 4;
}

/// Writes the value of a sequence of `length` bytes, 0 if it was malformed. `begin` is where the
/// text begins.
template <bool pairs>
void put(cursor& c, char16_t const* begin, std::uint32_t value, int length) {
  if (length != shortest_length(value) || value > 0x10FFFF) c.exact = false;
  if (length == 4 && value >= 0x10000 && value <= 0x10FFFF && pairs) {
    *c.out++ = high_surrogate(value);
    *c.out++ = low_surrogate(value);
    return;
  }
  if (value > 0xFFFF) c.exact = false;
  if (pairs && is_low_surrogate(value) && c.out != begin && is_high_surrogate(c.out[-1])) {
    c.exact = false;  // two sequences of three bytes, which will come back as one of four
  }
  *c.out++ = static_cast<char16_t>(value);
}

unsigned char const* end_of_sequence(cursor const& c) {
  unsigned char const* end = c.in + 1;
  int const length = std::countl_one(*c.in);
  while (end != c.end && end - c.in < std::min(length, 6) && is_continuation(*end)) ++end;
  return end;
}

template <bool pairs>
void decode_sequence(cursor& c, char16_t const* begin) {
  unsigned char const* const end = end_of_sequence(c);
  for_each_utf8_sequence(
      c.in, end, [&](std::uint32_t value, int length) { put<pairs>(c, begin, value, length); });
  c.in = end;
}

/// Three bytes that are neither too long a form nor a surrogate: most text beyond the alphabets.
/// Needs three bytes of input.
bool decode_plain_three_bytes(cursor& c) {
  unsigned const a = c.in[0], b = c.in[1], d = c.in[2];
  if ((a & 0xF0) != 0xE0 || a == 0xE0 || a == 0xED) return false;
  if (!is_continuation(b) || !is_continuation(d)) return false;
  *c.out++ = static_cast<char16_t>((a & 0xF) << 12 | (b & 0x3F) << 6 | (d & 0x3F));
  c.in += 3;
  return true;
}

/// Sequences up to the next ASCII byte or until little is left. Needs 16 bytes of input.
template <bool pairs>
void decode_high_run(cursor& c, char16_t const* begin) {
  do {
    if (*c.in < 0xE0) {
      if (unsigned const n = lanes::two_byte_sequences(c.out, c.in)) {
        c.in += 2 * n;
        c.out += n;
        continue;
      }
    } else if (decode_plain_three_bytes(c)) {
      continue;
    }
    decode_sequence<pairs>(c, begin);
  } while (c.left() >= slack && *c.in >= 0x80);
}

template <bool pairs>
void decode_utf8(cursor& c) {
  char16_t const* const begin = c.out;
  unsigned char const* next_blocks = c.in;  // where to try whole blocks again
  while (c.left() >= slack) {
    if (c.in >= next_blocks) {
      auto const [in, out] = decode_utf8_blocks({c.in, c.out}, c.end);
      c.in = in;
      c.out = out;
      next_blocks = in + 64;
      if (c.left() < slack) break;
    }
    unsigned const high = lanes::widen(c.out, c.in);
    int const ascii = high ? std::countr_zero(high) : 16;
    c.in += ascii;
    c.out += ascii;
    if (high) decode_high_run<pairs>(c, begin);
  }
  while (c.in != c.end) {
    if (*c.in < 0x80) {
      *c.out++ = *c.in++;
    } else {
      decode_sequence<pairs>(c, begin);
    }
  }
}

/// Gives whether a mark was skipped.
bool decode(cursor& c, charset_t charset, bool pairs) {
  bool has_bom = false;
  switch (charset) {
    case ASCII:
      c.exact = widen_all(c);
      break;
    case UTF8:
      has_bom = skip_mark(c, UTF8ByteOrderMark);
      pairs ? decode_utf8<true>(c) : decode_utf8<false>(c);
      break;
    case UTF16BE:
      c.exact = has_bom = skip_mark(c, UTF16BEByteOrderMark);
      decode_utf16<std::endian::big>(c);
      break;
    case UTF16LE:
      c.exact = has_bom = skip_mark(c, UTF16LEByteOrderMark);
      decode_utf16<std::endian::little>(c);
      break;
    case Latin1:
      widen_all(c);
      break;
    case MacRoman:
      decode_mac_roman(c);
      break;
    case CP1252:
      decode_cp1252(c);
      break;
    default:
      assert(!"no charset");
      break;
  }
  return has_bom;
}

}  // namespace

decoded decode_in_place(char16_t* block, std::size_t byte_count, charset_t charset, bool pairs) {
  if (byte_count == 0) return {0, false, charset != UTF16BE && charset != UTF16LE};
  if (is_of_library(charset)) return decode_by_library(block, byte_count, charset);
  auto const* const bytes = reinterpret_cast<unsigned char const*>(block) + byte_count;
  cursor c{bytes, bytes + byte_count, block};
  bool const has_bom = decode(c, charset, pairs);
  return {static_cast<std::size_t>(c.out - block), has_bom, c.exact};
}

}  // namespace encoding
