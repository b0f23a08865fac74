#pragma once

#include <random>
#include <string>

/// Random choices that a failing test can repeat: the seed is part of the test's trace.
class random_source {
 public:
  explicit random_source(unsigned seed) : engine_(seed) {}

  /// From 0 up to, not including, `bound`.
  size_t below(size_t bound) {
    return std::uniform_int_distribution<size_t>(0, bound - 1)(engine_);
  }
  size_t up_to(size_t bound) { return below(bound + 1); }
  bool one_in(size_t n) { return below(n) == 0; }

  /// Text of pieces that are no plain units: wide ones, clusters of several units, and what joins
  /// the ones next to it. No half of a surrogate pair.
  std::u16string characters(size_t pieces) {
    static char16_t const* const kinds[] = {
        u"a",         u"b",      u" ",        u"-",        u"e\u0301",
        u"\u0301",    u"中",     u"文",       u"한",       u"\u1100\u1161",
        u"\u11A8",    u"😀",      u"👩\u200D👧", u"👍🏽", u"\u200D",
        u"🇩",         u"🇪",      u"❤\uFE0F",  u"\uFE0E",   u"1\uFE0F\u20E3",
        u"क\u094Dषि", u"\u094D", u"س",        u"\u0600",   u"\u200B",
        u"𠮷",        u"\t",     u"Ж"};
    std::u16string result;
    for (; pieces > 0; --pieces) result += kinds[below(std::size(kinds))];
    return result;
  }

  char16_t pick(std::u16string_view alphabet) { return alphabet[below(alphabet.size())]; }
  std::u16string text(size_t length, std::u16string_view alphabet) {
    std::u16string result(length, u'\0');
    for (char16_t& unit : result) unit = pick(alphabet);
    return result;
  }

 private:
  std::mt19937 engine_;
};
