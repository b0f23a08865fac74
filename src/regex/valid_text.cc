#include "regex/valid_text.h"

#include <algorithm>
#include <cstdint>

namespace regex {
namespace {

constexpr std::size_t block = 64;

bool is_high(char16_t u) {
  return (u & 0xfc00) == 0xd800;
}

bool is_low(char16_t u) {
  return (u & 0xfc00) == 0xdc00;
}

// Of constant length and in units alone, so that the compiler makes it wide.
bool has_surrogate(char16_t const* first) {
  std::uint16_t found = 0;
  for (std::size_t i = 0; i < block; ++i)
    found = static_cast<std::uint16_t>(found | ((first[i] & 0xf800) == 0xd800 ? 1 : 0));
  return found != 0;
}

/// The index of the first lone surrogate from `at` on, or the size. `at` is not within a pair.
std::size_t find_lone_surrogate(std::u16string_view text, std::size_t at) {
  while (at < text.size()) {
    // Blocks without any surrogate are the rule.
    if (text.size() - at >= block && !has_surrogate(text.data() + at)) {
      at += block;
      continue;
    }
    std::size_t const end = std::min(at + block, text.size());
    while (at < end) {
      if (is_high(text[at]) && at + 1 < text.size() && is_low(text[at + 1])) {
        at += 2;
      } else if (is_high(text[at]) || is_low(text[at])) {
        return at;
      } else {
        ++at;
      }
    }
  }
  return text.size();
}

}  // namespace

valid_text::valid_text(std::u16string_view text) : units_(text) {
  std::size_t at = find_lone_surrogate(text, 0);
  if (at == text.size()) return;
  copy_ = text;
  for (; at < copy_.size(); at = find_lone_surrogate(copy_, at + 1)) copy_[at] = u'\xfffd';
  units_ = copy_;
}

bool valid_text::splits_pair(std::size_t index) const {
  return 0 < index && index < size() && is_low(units_[index]) && is_high(units_[index - 1]);
}

}  // namespace regex
