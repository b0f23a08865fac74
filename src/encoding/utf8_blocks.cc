#include "encoding/utf8_blocks.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "encoding/lanes.h"

#if defined(__SSE2__)
#include <tmmintrin.h>
#endif

// Text in most languages changes between sequences of one, two and three bytes every few
// characters, and a decoder that branches on each of them is slowed by mispredicted branches to a
// sixth of the speed of copying. So a mask of the bytes at which sequences end is made for 64
// bytes, and the next 12 bits of it pick a shuffle that brings the bytes of six characters (of up
// to two bytes), or four (of up to three), to their places.

namespace encoding {

#if defined(__SSE2__)
namespace {

constexpr int window = 12;  // bytes looked at in one step
constexpr std::uint64_t window_mask = (1 << window) - 1;
constexpr std::uint64_t four_threes = 0b100100100100;
constexpr std::uint8_t none = 0x80;

using shuffle = std::array<std::uint8_t, 16>;

struct step {
  std::uint8_t shuffle;   // index into `shuffles`; from `first_of_four` on it is one of four
  std::uint8_t consumed;  // bytes
};

/// Six units of 16 bits, the lead in the high byte.
constexpr shuffle shuffle_of_six(unsigned lengths) {
  shuffle s;
  s.fill(none);
  for (int i = 0, at = 0; i < 6; ++i) {
    bool const two = lengths >> i & 1;
    s[2 * i + 1] = two ? at++ : none;
    s[2 * i] = at++;
  }
  return s;
}

/// Four values of 32 bits, the last byte of the sequence lowest. `lengths` has a digit to the
/// base of three for each.
constexpr shuffle shuffle_of_four(unsigned lengths) {
  shuffle s;
  s.fill(none);
  for (int i = 0, at = 0; i < 4; ++i, lengths /= 3) {
    for (int k = lengths % 3; k >= 0; --k) s[4 * i + k] = at++;
  }
  return s;
}

constexpr unsigned first_of_four = 64;

/// The step for a window in which sequences end at the bits set in `ends`.
constexpr step step_for(unsigned ends) {
  std::array<int, window> lengths = {};
  int count = 0;
  for (int at = 0, length = 1; at < window; ++at, ++length) {
    if (!(ends >> at & 1)) continue;
    lengths[count++] = length;
    length = 0;
  }
  unsigned twos = 0, threes = 0, consumed = 0;
  int six = 0, four = 0;
  for (; six < std::min(count, 6) && lengths[six] <= 2; ++six) {
    twos |= unsigned(lengths[six] - 1) << six;
    consumed += lengths[six];
  }
  if (six == 6) return {static_cast<std::uint8_t>(twos), static_cast<std::uint8_t>(consumed)};
  consumed = 0;
  for (unsigned digit = 1; four < std::min(count, 4) && lengths[four] <= 3; ++four, digit *= 3) {
    threes += (lengths[four] - 1) * digit;
    consumed += lengths[four];
  }
  if (four < 4) return {0, 0};  // a longer sequence, which is never asked for
  return {static_cast<std::uint8_t>(first_of_four + threes), static_cast<std::uint8_t>(consumed)};
}

struct tables {
  alignas(16) std::array<shuffle, first_of_four + 81> shuffles = {};
  std::array<step, 1 << window> steps = {};

  constexpr tables() {
    for (unsigned i = 0; i < first_of_four; ++i) shuffles[i] = shuffle_of_six(i);
    for (unsigned i = 0; i < 81; ++i) shuffles[first_of_four + i] = shuffle_of_four(i);
    for (unsigned i = 0; i < steps.size(); ++i) steps[i] = step_for(i);
  }
};
constexpr tables table;

/// Whether the 64 bytes, which begin with a sequence, hold only well-formed sequences of up to
/// three bytes. The last one may go on after them.
bool is_plain(unsigned char const* in, std::uint64_t high, std::uint64_t continuations) {
  std::uint64_t const two_or_more = high & ~continuations;
  std::uint64_t const three_or_more = high & ~below_in_64(in, 0xE0);
  if ((two_or_more << 1 | three_or_more << 2) != continuations) return false;
  std::uint64_t const c0_or_c1 = below_in_64(in, 0xC2) & ~continuations & high;
  if (c0_or_c1) return false;
  if (!three_or_more) return true;
  std::uint64_t const e0 = below_in_64(in, 0xE1) & three_or_more;
  std::uint64_t const ed = below_in_64(in, 0xEE) & ~below_in_64(in, 0xED) & three_or_more;
  std::uint64_t const four_or_more = high & ~below_in_64(in, 0xF0);
  std::uint64_t const low_half = below_in_64(in, 0xA0);
  return !(four_or_more | (e0 << 1 & low_half) | (ed << 1 & ~low_half));
}

__attribute__((target("ssse3"))) __m128i units_of_six(__m128i bytes) {
  __m128i const rest = _mm_and_si128(bytes, _mm_set1_epi16(0x007F));
  __m128i const lead = _mm_and_si128(bytes, _mm_set1_epi16(0x1F00));
  return _mm_or_si128(rest, _mm_srli_epi16(lead, 2));
}

__attribute__((target("ssse3"))) __m128i units_of_four(__m128i bytes) {
  __m128i const last = _mm_and_si128(bytes, _mm_set1_epi32(0x00007F));
  __m128i const middle = _mm_and_si128(bytes, _mm_set1_epi32(0x003F00));
  __m128i const lead = _mm_and_si128(bytes, _mm_set1_epi32(0x0F0000));
  __m128i const values =
      _mm_or_si128(last, _mm_or_si128(_mm_srli_epi32(middle, 2), _mm_srli_epi32(lead, 4)));
  return _mm_shuffle_epi8(values,
                          _mm_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, -1, -1, -1, -1, -1, -1, -1, -1));
}

/// Decodes the sequences of a plain block but for the last few bytes.
__attribute__((target("ssse3"))) utf8_position decode_block(utf8_position at, std::uint64_t ends) {
  unsigned char const* const stop = at.in + 64 - window;
  while (at.in < stop) {
    int consumed;
    if (int const ascii = std::countr_one(ends); ascii >= 8) {
      lanes::widen(at.out, at.in);
      consumed = std::min(ascii, 16);
      at.out += consumed;
    } else if ((ends & window_mask) == four_threes) {
      // Said apart from the table, for the next step need not wait for this one's look-up.
      __m128i const bytes = _mm_shuffle_epi8(sse2_lanes::load(at.in),
                                             sse2_lanes::load(&table.shuffles[first_of_four + 80]));
      sse2_lanes::store(at.out, units_of_four(bytes));
      at.out += 4;
      consumed = window;
    } else {
      step const s = table.steps[ends & window_mask];
      __m128i const bytes =
          _mm_shuffle_epi8(sse2_lanes::load(at.in), sse2_lanes::load(&table.shuffles[s.shuffle]));
      bool const six = s.shuffle < first_of_four;
      sse2_lanes::store(at.out, six ? units_of_six(bytes) : units_of_four(bytes));
      at.out += six ? 6 : 4;
      consumed = s.consumed;
    }
    at.in += consumed;
    ends >>= consumed;
  }
  return at;
}

}  // namespace

utf8_position decode_utf8_blocks(utf8_position at, unsigned char const* end) {
  static bool const available = __builtin_cpu_supports("ssse3");
  if (!available) return at;
  while (end - at.in >= 96) {
    std::uint64_t const high = below_in_64(at.in, 0);
    if (!high) {
      for (int i = 0; i < 64; i += 16) lanes::widen(at.out + i, at.in + i);
      at.in += 64;
      at.out += 64;
      continue;
    }
    std::uint64_t const continuations = below_in_64(at.in, 0xC0);
    if (!is_plain(at.in, high, continuations)) break;
    at = decode_block(at, ~continuations >> 1);
  }
  return at;
}
#else
utf8_position decode_utf8_blocks(utf8_position at, unsigned char const*) {
  return at;
}
#endif

}  // namespace encoding
