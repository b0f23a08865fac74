#include "encoding/estimate_buffer.h"

#include <bit>
#include <cstdint>
#include <cstring>

#include "encoding/estimate.h"
#include "encoding/lanes.h"

// Opening a file must cost little more than reading it. The generic test looks at one byte at a
// time and branches on it; this one turns 64 bytes into one 64-bit mask for each question and
// answers it for all of them at once, whatever the text.

namespace encoding {
namespace {

constexpr std::size_t block = 64;

/// Where continuation bytes must stand is known from the lead bytes before: one after each byte
/// from C0 on, another after each from E0 on, and so on. UTF-8 is right exactly if
/// they stand there and nowhere else.
class utf8_validator {
 public:
  bool accept(unsigned char const* in) {
    std::uint64_t const high = below_in_64(in, 0);
    if (!(high | due_)) return true;
    std::uint64_t const continuations = below_in_64(in, 0xC0);
    std::uint64_t expected = due_;
    due_ = 0;
    expect(expected, high & ~continuations, 1);
    expect(expected, high & ~below_in_64(in, 0xE0), 2);
    std::uint64_t const four_or_more = high & ~below_in_64(in, 0xF0);
    if (four_or_more) {
      expect(expected, four_or_more, 3);
      expect(expected, high & ~below_in_64(in, 0xF8), 4);
      expect(expected, high & ~below_in_64(in, 0xFC), 5);
      if (high & ~below_in_64(in, 0xFE)) return false;
    }
    return expected == continuations;
  }

  bool complete() const { return due_ == 0; }

 private:
  void expect(std::uint64_t& expected, std::uint64_t leads, int distance) {
    expected |= leads << distance;
    due_ |= leads >> (block - distance);
  }

  std::uint64_t due_ = 0;  // continuations expected at the start of the next block
};

/// Calls `step` for each block of 64 bytes, the last one filled up with zeros, until it gives
/// false; gives what the last call gave.
template <typename Step>
bool for_each_block(unsigned char const* first, unsigned char const* last, Step step) {
  for (; last - first >= std::ptrdiff_t{block}; first += block) {
    if (!step(first)) return false;
  }
  if (first == last) return true;
  unsigned char rest[block] = {};
  std::memcpy(rest, first, last - first);
  return step(rest);
}

bool is_utf8(unsigned char const* first, unsigned char const* last) {
  utf8_validator validator;
  return for_each_block(first, last, [&](auto* in) { return validator.accept(in); }) &&
         validator.complete();
}

bool can_be_latin1(unsigned char const* first, unsigned char const* last) {
  return for_each_block(first, last, [](auto* in) { return !below_in_64(in, 0xA0); });
}

unsigned char const* first_high_byte(unsigned char const* first, unsigned char const* last) {
  for (; last - first >= std::ptrdiff_t{block}; first += block) {
    if (std::uint64_t const high = below_in_64(first, 0)) return first + std::countr_zero(high);
  }
  return std::find_if(first, last, [](unsigned char byte) { return byte & 0x80; });
}

}  // namespace

charset_t estimate_buffer(unsigned char const* bytes, std::size_t size) {
  unsigned char const* const last = bytes + size;
  unsigned char const* const high = first_high_byte(bytes, last);
  if (high == last) return ASCII;
  // The mark is itself a right sequence, and what stands before `high` is ASCII.
  if (is_utf8(high, last)) return UTF8;
  if (probabilityForUTF16BE(bytes, last) == 100) return UTF16BE;
  if (probabilityForUTF16LE(bytes, last) == 100) return UTF16LE;
  if (!Probability.empty()) return estimate_8bit(bytes, last);
  // Without statistics all scores are equal or NaN, and none is greater.
  return can_be_latin1(high, last) ? Latin1 : MacRoman;
}

}  // namespace encoding
