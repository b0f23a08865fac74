#pragma once

#include <memory>
#include <utility>
#include <vector>

namespace regex {

/// What a search found: a counted handle, cheap to copy, on the ranges of the whole match (group 0)
/// and of the captures. It is false when nothing was found. It holds iterators into the text, and
/// is worth as much as they are.
template <class Iterator>
class match {
 public:
  match() = default;
  /// The text that was searched.
  match(Iterator first, Iterator last)
      : record_(std::make_shared<record>(record{first, last, {}})) {}

  /// The answer of a search that was broken off: no match was found, though there may be one.
  static match broken_off() {
    match m;
    m.gave_up_ = true;
    return m;
  }

  explicit operator bool() const { return record_ != nullptr; }
  bool gave_up() const { return gave_up_; }

  /// The end of the text for a group that took no part in the match. Only for a match that is true.
  Iterator begin(std::size_t n = 0) const { return is_set(n) ? group(n).begin : record_->last; }
  Iterator end(std::size_t n = 0) const { return is_set(n) ? group(n).end : record_->last; }
  /// Whether the group took part in the match, be it with an empty text.
  bool is_set(std::size_t n) const {
    return record_ && n < record_->groups.size() && group(n).is_set;
  }
  bool empty(std::size_t n = 0) const { return !is_set(n) || group(n).begin == group(n).end; }
  /// One more than the number of the last group that is set.
  std::size_t size() const { return record_ ? record_->groups.size() : 0; }

  Iterator text_begin() const { return record_->first; }
  Iterator text_end() const { return record_->last; }

  void insert(std::size_t n, Iterator begin, Iterator end) {
    if (n >= record_->groups.size()) record_->groups.resize(n + 1);
    record_->groups[n] = {begin, end, true};
  }

 private:
  struct range {
    Iterator begin{}, end{};
    bool is_set = false;
  };
  struct record {
    Iterator first, last;
    std::vector<range> groups;
  };
  range const& group(std::size_t n) const { return record_->groups[n]; }

  std::shared_ptr<record> record_;
  bool gave_up_ = false;
};

}  // namespace regex
