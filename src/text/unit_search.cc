#include "text/unit_search.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <numeric>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace text {

#ifdef __SSE2__

namespace {

/// All bits of the lane are set for each of the eight units at `at` that equals `sought`.
__m128i matches(char_t const* at, __m128i sought) {
  return _mm_cmpeq_epi16(_mm_loadu_si128(reinterpret_cast<__m128i const*>(at)), sought);
}

/// The sum of the eight lanes.
size_t sum(__m128i lanes) {
  alignas(16) uint16_t each[8];
  _mm_store_si128(reinterpret_cast<__m128i*>(each), lanes);
  return std::accumulate(each, each + 8, size_t{0});
}

}  // namespace

char_t const* find_unit(char_t const* first, char_t const* last, char_t unit) {
  __m128i const sought = _mm_set1_epi16(static_cast<short>(unit));
  for (; last - first >= 16; first += 16) {
    __m128i const found = _mm_packs_epi16(matches(first, sought), matches(first + 8, sought));
    if (int const bits = _mm_movemask_epi8(found))
      return first + std::countr_zero(static_cast<unsigned>(bits));
  }
  return std::find(first, last, unit);
}

char_t const* find_unit_or_above(char_t const* first, char_t const* last, char_t unit,
                                 char_t bound) {
  __m128i const sought = _mm_set1_epi16(static_cast<short>(unit));
  __m128i const below = _mm_set1_epi16(static_cast<short>(bound - 1));
  __m128i const zero = _mm_setzero_si128();
  auto const load = [](char_t const* at) {
    return _mm_loadu_si128(reinterpret_cast<__m128i const*>(at));
  };
  // One bit for each byte of the eight units at `at`, set where none of them is sought.
  auto const passed_bytes = [&](char_t const* at) {
    __m128i const units = load(at);
    __m128i const stop = _mm_or_si128(_mm_cmpeq_epi16(units, sought), _mm_subs_epu16(units, below));
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(stop, zero)));
  };
  auto const first_of_eights = [&](char_t const* at, char_t const* end) {
    for (; at != end; at += 8)
      if (unsigned const passed = passed_bytes(at); passed != 0xFFFF)
        return at + std::countr_one(passed) / 2;
    return at;
  };
  char_t const* const begin = first;
  // Four vectors at a time: what is above the bound shows in all of them laid over each other,
  // which may also be above it when none is.
  for (; last - first >= 32; first += 32) {
    __m128i const a = load(first), b = load(first + 8), c = load(first + 16), d = load(first + 24);
    __m128i const all = _mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d));
    __m128i const found =
        _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi16(a, sought), _mm_cmpeq_epi16(b, sought)),
                     _mm_or_si128(_mm_cmpeq_epi16(c, sought), _mm_cmpeq_epi16(d, sought)));
    __m128i const stops = _mm_or_si128(found, _mm_subs_epu16(all, below));
    if (_mm_movemask_epi8(_mm_cmpeq_epi16(stops, zero)) == 0xFFFF) continue;
    char_t const* const stop = first_of_eights(first, first + 32);
    if (stop != first + 32) return stop;
  }
  char_t const* const rest = first + (last - first) / 8 * 8;
  first = first_of_eights(first, rest);
  if (first != rest || first == last) return first;
  // The last eight units once more from where they end: those seen before don't stop it.
  if (last - begin >= 8) return last - 8 + std::countr_one(passed_bytes(last - 8)) / 2;
  return std::find_if(first, last, [=](char_t u) { return u == unit || u >= bound; });
}

// Each lane counts its own units: without counting bits, which costs a call on the plainest x86-64.
size_t count_unit(unit_view units, char_t unit) {
  constexpr std::ptrdiff_t lane_limit = std::numeric_limits<uint16_t>::max();
  __m128i const sought = _mm_set1_epi16(static_cast<short>(unit));
  char_t const* at = units.data();
  char_t const* const last = at + units.size();
  size_t count = 0;
  while (last - at >= 8) {
    __m128i lanes = _mm_setzero_si128();
    char_t const* const stop = at + 8 * std::min((last - at) / 8, lane_limit);
    for (; at != stop; at += 8) lanes = _mm_sub_epi16(lanes, matches(at, sought));
    count += sum(lanes);
  }
  return count + static_cast<size_t>(std::count(at, last, unit));
}

#else

char_t const* find_unit(char_t const* first, char_t const* last, char_t unit) {
  return std::find(first, last, unit);
}

char_t const* find_unit_or_above(char_t const* first, char_t const* last, char_t unit,
                                 char_t bound) {
  return std::find_if(first, last, [=](char_t u) { return u == unit || u >= bound; });
}

size_t count_unit(unit_view units, char_t unit) {
  return static_cast<size_t>(std::count(units.begin(), units.end(), unit));
}

#endif

}  // namespace text
