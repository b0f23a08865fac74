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

  char16_t pick(std::u16string_view alphabet) { return alphabet[below(alphabet.size())]; }
  std::u16string text(size_t length, std::u16string_view alphabet) {
    std::u16string result(length, u'\0');
    for (char16_t& unit : result) unit = pick(alphabet);
    return result;
  }

 private:
  std::mt19937 engine_;
};
