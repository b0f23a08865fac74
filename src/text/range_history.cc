#include "text/range_history.h"

namespace text {

namespace {

constexpr size_t overhead = 48;  // of a snapshot without its numbers, in words

}  // namespace

void range_history::arrive(uint32_t state, words const& ranges) {
  store(arrived_, state, ranges);
}

void range_history::leave(uint32_t state, uint32_t next, words const& ranges) {
  for (snapshots* kept : {&arrived_, &left_})
    forget(*kept, kept->upper_bound(state), kept->lower_bound(next));
  forget(left_, left_.lower_bound(state), left_.upper_bound(state));
  // An empty list that differs is kept, too.
  if (ranges != after_redo(state)) left_[state] = packed(ranges);
  stay_within_bound();
}

range_history::words range_history::after_undo(uint32_t state) const {
  auto const found = left_.find(state);
  return found != left_.end() ? unpacked(found->second) : after_redo(state);
}

range_history::words range_history::after_redo(uint32_t state) const {
  auto const found = arrived_.find(state);
  return found != arrived_.end() ? unpacked(found->second) : words();
}

void range_history::store(snapshots& in, uint32_t state, words const& ranges) {
  forget(in, in.lower_bound(state), in.upper_bound(state));
  if (!ranges.empty()) in[state] = packed(ranges);
  stay_within_bound();
}

range_history::snapshot range_history::packed(words const& ranges) {
  snapshot made;
  made.cost = overhead;
  if (ranges.empty()) {
    kept_words_ += made.cost;
    return made;
  }
  if (base_ && base_->size() == ranges.size() && *base_ != ranges) {
    made.differences.resize(width_);
    for (size_t i = 0; i < ranges.size(); ++i)
      made.differences[i % width_].push_back(ranges[i] - (*base_)[i]);
    for (number_runs const& runs : made.differences) made.cost += runs.words() + overhead / width_;
    if (2 * made.cost > ranges.size()) made = {};
  }
  if (made.differences.empty()) {
    bool const has_base = base_ && *base_ == ranges;
    if (!has_base) base_ = std::make_shared<words const>(ranges);
    made.cost = overhead + (has_base ? 0 : ranges.size());
  }
  made.base = base_;
  kept_words_ += made.cost;
  return made;
}

range_history::words range_history::unpacked(snapshot const& kept) const {
  if (kept.base == nullptr) return {};
  words result = *kept.base;
  for (size_t word = 0; word < kept.differences.size(); ++word) {
    size_t at = word;
    kept.differences[word].visit([&](uint32_t difference) {
      result[at] += difference;
      at += width_;
    });
  }
  return result;
}

void range_history::forget(snapshots& in, snapshots::iterator first, snapshots::iterator last) {
  for (auto it = first; it != last; ++it) kept_words_ -= it->second.cost;
  in.erase(first, last);
}

// The two newest stay: where one is and where one was.
void range_history::stay_within_bound() {
  while (kept_words_ > max_words && arrived_.size() + left_.size() > 2) {
    bool const from_left =
        arrived_.empty() || (!left_.empty() && left_.begin()->first <= arrived_.begin()->first);
    snapshots& oldest = from_left ? left_ : arrived_;
    forget(oldest, oldest.begin(), std::next(oldest.begin()));
  }
}

}  // namespace text
