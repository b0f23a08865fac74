#pragma once

#include <array>
#include <utility>
#include <vector>

#include "regex/parse_tree.h"

namespace regex {

/// A bracket class made fast: one bit for each unit below 128, the rest by walking ranges and
/// classes. Word characters are asked for each time, as the user may change them while a pattern
/// lives.
class unit_set {
 public:
  unit_set() = default;
  explicit unit_set(parse_tree::range_data const& members);

  /// Whether "word", or "not word", is among the members.
  bool has_word_class(bool negated) const { return negated ? has_not_word_ : has_word_; }

  /// Whether a unit below 128 belongs to a member other than a word class.
  bool has_always(unit_t ascii) const { return ascii_[ascii >> 6] >> (ascii & 63) & 1; }

  /// Whether the unit belongs to one of the members.
  template <class T>
  bool contains(T c) const {
    unit_t const u = to_unit(c);
    if (u < 128 && has_always(u)) return true;
    return (u >= 128 || has_word_ || has_not_word_) && contains_slowly(c);
  }

 private:
  template <class T>
  bool contains_slowly(T c) const {
    unit_t const u = to_unit(c);
    for (auto const& [low, high] : ranges_) {
      if (low <= u && u <= high) return true;
    }
    for (auto const& member : classes_) {
      if (traits<T>::is(member.code, c) != member.negate) return true;
    }
    return false;
  }

  std::array<std::uint64_t, 2> ascii_{};
  bool has_word_ = false, has_not_word_ = false;
  std::vector<std::pair<unit_t, unit_t>> ranges_;
  std::vector<parse_tree::class_data> classes_;
};

}  // namespace regex
