#include "text/unit_search.h"

#include <algorithm>
#include <bit>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace text {

#ifdef __SSE2__

namespace {

/// Two bits for each of the eight units at `at` that equals `sought`.
unsigned matches(char_t const* at, __m128i sought) {
  __m128i const units = _mm_loadu_si128(reinterpret_cast<__m128i const*>(at));
  return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(units, sought)));
}

}  // namespace

char_t const* find_unit(char_t const* first, char_t const* last, char_t unit) {
  __m128i const sought = _mm_set1_epi16(static_cast<short>(unit));
  for (; last - first >= 8; first += 8)
    if (unsigned const found = matches(first, sought)) return first + std::countr_zero(found) / 2;
  return std::find(first, last, unit);
}

size_t count_unit(unit_view units, char_t unit) {
  __m128i const sought = _mm_set1_epi16(static_cast<short>(unit));
  char_t const* at = units.data();
  char_t const* const last = at + units.size();
  size_t twice = 0;
  for (; last - at >= 8; at += 8) twice += static_cast<size_t>(std::popcount(matches(at, sought)));
  return twice / 2 + static_cast<size_t>(std::count(at, last, unit));
}

#else

char_t const* find_unit(char_t const* first, char_t const* last, char_t unit) {
  return std::find(first, last, unit);
}

size_t count_unit(unit_view units, char_t unit) {
  return static_cast<size_t>(std::count(units.begin(), units.end(), unit));
}

#endif

}  // namespace text
