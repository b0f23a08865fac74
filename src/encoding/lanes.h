#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

/// The few steps on 16 bytes, or 8 or 16 units, at once that the functions for whole files are
/// made of. Each comes twice, for SSE2 and in plain loops, with equal results; `lanes` names the
/// one in use. Bit i of a mask stands for element i. All input of a step is read before any
/// output is written, so the two may overlap.
namespace encoding {

struct portable_lanes {
  /// Widens 16 bytes to units; gives the mask of bytes with the top bit set.
  static unsigned widen(char16_t* out, unsigned char const* in) {
    unsigned char bytes[16];
    std::memcpy(bytes, in, 16);
    unsigned mask = 0;
    for (int i = 0; i < 16; ++i) {
      out[i] = bytes[i];
      mask |= unsigned(bytes[i] >> 7) << i;
    }
    return mask;
  }

  /// Decodes the sequences of two bytes, C2..DF then 80..BF, that the 16 bytes begin with, and
  /// gives their number. Writes 8 units whatever their number.
  static unsigned two_byte_sequences(char16_t* out, unsigned char const* in) {
    unsigned char bytes[16];
    std::memcpy(bytes, in, 16);
    unsigned good = 0;
    for (int i = 0; i < 8; ++i) {
      unsigned const a = bytes[2 * i], b = bytes[2 * i + 1];
      out[i] = static_cast<char16_t>((a & 0x1F) << 6 | (b & 0x3F));
      good |= unsigned(a >= 0xC2 && a < 0xE0 && (b & 0xC0) == 0x80) << i;
    }
    return std::countr_one(good);
  }

  /// Encodes the units from U+0080 to U+07FF that the 8 units begin with as sequences of two
  /// bytes, and gives their number. Writes 16 bytes whatever their number.
  static unsigned put_two_byte_sequences(unsigned char* out, char16_t const* in) {
    unsigned good = 0;
    for (int i = 0; i < 8; ++i) {
      good |= unsigned(in[i] >= 0x80 && in[i] < 0x800) << i;
      out[2 * i] = static_cast<unsigned char>(0xC0 | (in[i] >> 6 & 0x1F));
      out[2 * i + 1] = static_cast<unsigned char>(0x80 | (in[i] & 0x3F));
    }
    return std::countr_one(good);
  }

  /// The mask of the 16 signed bytes that are below `limit`: with 0 the bytes above 0x7F, with
  /// 0xC0 the continuation bytes of UTF-8, and so on.
  static unsigned below(unsigned char const* in, signed char limit) {
    unsigned mask = 0;
    for (int i = 0; i < 16; ++i) mask |= unsigned(static_cast<signed char>(in[i]) < limit) << i;
    return mask;
  }

  /// Narrows 16 units to bytes; gives the mask of units that have a bit of `refused` set, or
  /// equal `stop`. What is written for these is not to be used.
  static unsigned narrow(unsigned char* out, char16_t const* in, char16_t refused, char16_t stop) {
    unsigned mask = 0;
    for (int i = 0; i < 16; ++i) {
      mask |= unsigned((in[i] & refused) || in[i] == stop) << i;
      out[i] = static_cast<unsigned char>(in[i]);
    }
    return mask;
  }

  /// The mask of the 8 units that equal `unit`.
  static unsigned equal(char16_t const* in, char16_t unit) {
    unsigned mask = 0;
    for (int i = 0; i < 8; ++i) mask |= unsigned(in[i] == unit) << i;
    return mask;
  }

  /// Copies 8 units with the two bytes of each exchanged.
  static void swap_bytes(void* out, void const* in) {
    unsigned char bytes[16];
    std::memcpy(bytes, in, 16);
    for (int i = 0; i < 16; i += 2) std::swap(bytes[i], bytes[i + 1]);
    std::memcpy(out, bytes, 16);
  }

  /// How many of `count` units, a multiple of 8, stand before the first CR; adds the LFs among
  /// these to `lf`. Only tells to within 8 units: the CR is one of the next 8.
  static std::size_t skip_to_cr(char16_t const* in, std::size_t count, std::size_t& lf) {
    for (std::size_t i = 0; i < count; i += 8) {
      if (equal(in + i, u'\r')) return i;
      lf += std::popcount(equal(in + i, u'\n'));
    }
    return count;
  }
};

#if defined(__SSE2__)
struct sse2_lanes {
  static __m128i load(void const* p) { return _mm_loadu_si128(static_cast<__m128i const*>(p)); }
  static void store(void* p, __m128i v) { _mm_storeu_si128(static_cast<__m128i*>(p), v); }
  static unsigned mask_of_units(__m128i v) {
    return _mm_movemask_epi8(_mm_packs_epi16(v, _mm_setzero_si128()));
  }

  static unsigned widen(char16_t* out, unsigned char const* in) {
    __m128i const bytes = load(in);
    store(out, _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
    store(out + 8, _mm_unpackhi_epi8(bytes, _mm_setzero_si128()));
    return _mm_movemask_epi8(bytes);
  }

  static unsigned two_byte_sequences(char16_t* out, unsigned char const* in) {
    __m128i const bytes = load(in);
    // As little-endian units the lead is the low byte, the continuation the high one.
    __m128i const lead = _mm_slli_epi16(_mm_and_si128(bytes, _mm_set1_epi16(0x1F)), 6);
    __m128i const rest = _mm_and_si128(_mm_srli_epi16(bytes, 8), _mm_set1_epi16(0x3F));
    store(out, _mm_or_si128(lead, rest));
    __m128i const form = _mm_and_si128(bytes, _mm_set1_epi16(static_cast<short>(0xC0E0)));
    __m128i const right = _mm_cmpeq_epi16(form, _mm_set1_epi16(static_cast<short>(0x80C0)));
    __m128i const small = _mm_and_si128(bytes, _mm_set1_epi16(0x1E));
    __m128i const too_long = _mm_cmpeq_epi16(small, _mm_setzero_si128());
    return std::countr_one(mask_of_units(_mm_andnot_si128(too_long, right)));
  }

  static unsigned put_two_byte_sequences(unsigned char* out, char16_t const* in) {
    __m128i const units = load(in);
    __m128i const lead = _mm_and_si128(_mm_srli_epi16(units, 6), _mm_set1_epi16(0x1F));
    __m128i const rest = _mm_slli_epi16(_mm_and_si128(units, _mm_set1_epi16(0x3F)), 8);
    __m128i const form = _mm_set1_epi16(static_cast<short>(0x80C0));
    store(out, _mm_or_si128(form, _mm_or_si128(lead, rest)));
    __m128i const zero = _mm_setzero_si128();
    __m128i const fits = _mm_cmpeq_epi16(_mm_srli_epi16(units, 11), zero);
    __m128i const ascii = _mm_cmpeq_epi16(_mm_srli_epi16(units, 7), zero);
    return std::countr_one(mask_of_units(_mm_andnot_si128(ascii, fits)));
  }

  static unsigned below(unsigned char const* in, signed char limit) {
    return _mm_movemask_epi8(_mm_cmplt_epi8(load(in), _mm_set1_epi8(limit)));
  }

  static unsigned narrow(unsigned char* out, char16_t const* in, char16_t refused, char16_t stop) {
    __m128i const a = load(in), b = load(in + 8);
    store(out, _mm_packus_epi16(a, b));
    __m128i const r = _mm_set1_epi16(static_cast<short>(refused));
    __m128i const s = _mm_set1_epi16(static_cast<short>(stop));
    auto const taken = [&](__m128i v) {
      __m128i const fits = _mm_cmpeq_epi16(_mm_and_si128(v, r), _mm_setzero_si128());
      return _mm_andnot_si128(_mm_cmpeq_epi16(v, s), fits);
    };
    return _mm_movemask_epi8(_mm_packs_epi16(taken(a), taken(b))) ^ 0xFFFF;
  }

  static unsigned equal(char16_t const* in, char16_t unit) {
    return mask_of_units(_mm_cmpeq_epi16(load(in), _mm_set1_epi16(static_cast<short>(unit))));
  }

  static void swap_bytes(void* out, void const* in) {
    __m128i const v = load(in);
    store(out, _mm_or_si128(_mm_slli_epi16(v, 8), _mm_srli_epi16(v, 8)));
  }

  static std::size_t skip_to_cr(char16_t const* in, std::size_t count, std::size_t& lf) {
    std::size_t done = 0;
    // Eight counters of 16 bits would overflow after more rounds than this.
    while (done < count) {
      std::size_t const stop = done + std::min<std::size_t>(count - done, 8 * 0x7FFF);
      __m128i counters = _mm_setzero_si128();
      bool cr = false;
      for (; done < stop; done += 8) {
        __m128i const v = load(in + done);
        cr = _mm_movemask_epi8(_mm_cmpeq_epi16(v, _mm_set1_epi16('\r')));
        if (cr) break;
        counters = _mm_sub_epi16(counters, _mm_cmpeq_epi16(v, _mm_set1_epi16('\n')));
      }
      char16_t sums[8];
      store(sums, counters);
      for (char16_t sum : sums) lf += sum;
      if (cr) break;
    }
    return done;
  }
};
using lanes = sse2_lanes;
#else
using lanes = portable_lanes;
#endif

/// As lanes::below, for 64 bytes. `limit` is taken as a signed byte, so 0xC0 stands for -64.
inline std::uint64_t below_in_64(unsigned char const* in, unsigned char limit) {
  std::uint64_t mask = 0;
  for (unsigned i = 0; i < 4; ++i) {
    mask |= std::uint64_t{lanes::below(in + 16 * i, static_cast<signed char>(limit))} << 16 * i;
  }
  return mask;
}

}  // namespace encoding
