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
  // A lane is all ones unless its unit stops the search; what is not above `below` leaves 0.
  auto const passed = [&](char_t const* at) {
    __m128i const units = _mm_loadu_si128(reinterpret_cast<__m128i const*>(at));
    __m128i const low = _mm_cmpeq_epi16(_mm_subs_epu16(units, below), zero);
    return _mm_andnot_si128(_mm_cmpeq_epi16(units, sought), low);
  };
  for (; last - first >= 16; first += 16) {
    __m128i const lanes = _mm_packs_epi16(passed(first), passed(first + 8));
    auto const bits = static_cast<unsigned>(_mm_movemask_epi8(lanes));
    if (bits != 0xFFFF) return first + std::countr_one(bits);
  }
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
