#include "regex/literal_search.h"

#include "regex/traits.h"

#include <algorithm>
#include <array>
#include <bit>
#include <memory>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

// Two units of the sequence that are likely to be rare are looked for, eight places at a time, and
// the whole is compared where both stand. A text in which that happens too often, such as "aaaa",
// is searched by the borders of the sequence's prefixes (Knuth, Morris, Pratt), which looks at each
// unit of the text at most twice.

namespace regex {
namespace {

constexpr std::size_t all_units = 0x10000;

// The lower case of each unit. Made once, at the first search that ignores case.
std::array<char16_t, all_units> const& lower_case() {
  static auto const table = [] {
    auto made = std::make_unique<std::array<char16_t, all_units>>();
    for (std::size_t u = 0; u < all_units; ++u)
      (*made)[u] = traits<char16_t>::to_lower(static_cast<char16_t>(u));
    return made;
  }();
  return *table;
}

// A guess how common a unit is in texts and programs.
int commonness(char16_t u) {
  constexpr std::u16string_view most_common = u" etaoinsrlcdu\n\t0_.,;()";
  if (most_common.find(u) != most_common.npos) return 3;
  if (u'a' <= u && u <= u'z') return 2;
  return u < 128 ? 1 : 0;
}

#ifdef __SSE2__
__m128i matches(char16_t const* at, std::vector<char16_t> const& units) {
  __m128i const text = _mm_loadu_si128(reinterpret_cast<__m128i const*>(at));
  __m128i found = _mm_cmpeq_epi16(text, _mm_set1_epi16(static_cast<short>(units[0])));
  for (std::size_t n = 1; n < units.size(); ++n)
    found =
        _mm_or_si128(found, _mm_cmpeq_epi16(text, _mm_set1_epi16(static_cast<short>(units[n]))));
  return found;
}
#endif

bool is_one_of(char16_t u, std::vector<char16_t> const& units) {
  return std::find(units.begin(), units.end(), u) != units.end();
}

}  // namespace

literal_search::literal_search(std::u16string_view sought, bool ignore_case)
    : sought_(sought), ignore_case_(ignore_case) {
  if (ignore_case_)
    std::transform(sought_.begin(), sought_.end(), sought_.begin(),
                   [](char16_t u) { return lower_case()[u]; });
  std::vector<std::size_t> by_rarity(sought_.size());
  for (std::size_t n = 0; n < by_rarity.size(); ++n) by_rarity[n] = n;
  std::stable_sort(by_rarity.begin(), by_rarity.end(), [&](std::size_t a, std::size_t b) {
    return commonness(sought_[a]) < commonness(sought_[b]);
  });
  rare_ = make_probe(by_rarity[0]);
  second_ = make_probe(by_rarity[by_rarity.size() > 1 ? 1 : 0]);

  borders_.assign(sought_.size() + 1, 0);
  for (std::size_t n = 1, border = 0; n < sought_.size(); ++n) {
    while (border > 0 && sought_[n] != sought_[border]) border = borders_[border];
    if (sought_[n] == sought_[border]) ++border;
    borders_[n + 1] = border;
  }
}

literal_search::probe literal_search::make_probe(std::size_t offset) const {
  char16_t const unit = sought_[offset];
  probe made{offset, {unit}};
  if (!ignore_case_) return made;
  for (std::size_t u = 0; u < all_units; ++u)
    if (lower_case()[u] == unit && u != unit) made.units.push_back(static_cast<char16_t>(u));
  return made;
}

char16_t literal_search::fold(char16_t u) const {
  return ignore_case_ ? lower_case()[u] : u;
}

bool literal_search::stands_at(char16_t const* at, std::size_t& compared) const {
  for (char16_t const sought : sought_) {
    ++compared;
    if (fold(*at++) != sought) return false;
  }
  return true;
}

// The first place from `at` up to `stop` where both probes fit, or `stop`.
char16_t const* literal_search::next_candidate(char16_t const* at, char16_t const* stop) const {
#ifdef __SSE2__
  for (; stop - at >= 16; at += 16) {
    __m128i const low = matches(at + rare_.offset, rare_.units);
    __m128i const high = matches(at + 8 + rare_.offset, rare_.units);
    if (_mm_movemask_epi8(_mm_or_si128(low, high)) == 0) continue;
    __m128i const both =
        _mm_packs_epi16(_mm_and_si128(low, matches(at + second_.offset, second_.units)),
                        _mm_and_si128(high, matches(at + 8 + second_.offset, second_.units)));
    if (int const bits = _mm_movemask_epi8(both))
      return at + std::countr_zero(static_cast<unsigned>(bits));
  }
#endif
  while (at != stop && !(is_one_of(at[rare_.offset], rare_.units) &&
                         is_one_of(at[second_.offset], second_.units)))
    ++at;
  return at;
}

char16_t const* literal_search::find(char16_t const* first, char16_t const* last) const {
  if (static_cast<std::size_t>(last - first) < sought_.size()) return last;
  char16_t const* const stop = last - sought_.size() + 1;
  std::size_t compared = 0;
  for (char16_t const* at = first; at != stop; ++at) {
    at = next_candidate(at, stop);
    if (at == stop) break;
    if (stands_at(at, compared)) return at;
    if (compared > 1024 + 4 * static_cast<std::size_t>(at - first))
      return find_steadily(at + 1, last, false);
  }
  return last;
}

char16_t const* literal_search::find_steadily(char16_t const* first, char16_t const* last,
                                              bool to_the_end) const {
  char16_t const* found = last;
  std::size_t matched = 0;
  for (char16_t const* at = first; at != last; ++at) {
    char16_t const unit = fold(*at);
    while (matched > 0 && unit != sought_[matched]) matched = borders_[matched];
    if (unit == sought_[matched]) ++matched;
    if (matched < sought_.size()) continue;
    found = at + 1 - matched;
    if (!to_the_end) break;
    matched = borders_[matched];
  }
  return found;
}

// By stretches from the end, each searched forward.
char16_t const* literal_search::find_last(char16_t const* first, char16_t const* last) const {
  auto const length = static_cast<std::ptrdiff_t>(sought_.size());
  if (last - first < length) return last;
  std::ptrdiff_t const stretch = std::max<std::ptrdiff_t>(4096, 4 * length);
  for (char16_t const* stop = last - length + 1; stop != first;) {
    char16_t const* const begin = stop - std::min(stretch, stop - first);
    char16_t const* const end = stop + length - 1;
    char16_t const* const found = find(begin, end);
    if (found != end) return find_steadily(found, end, true);
    stop = begin;
  }
  return last;
}

}  // namespace regex
