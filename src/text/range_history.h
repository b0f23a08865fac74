#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "text/number_runs.h"

namespace text {

/// Which ranges stood at each state of a text, for undo and redo to bring back. A state is arrived
/// at by a change, or by redo, and left by the next change, to which undo returns; what the user
/// does between the two may change the ranges. A state that isn't known has none.
///
/// Ranges are given as words, so many for each. What is kept is the difference from an earlier
/// list as runs of numbers: typing in any number of lines costs a few words a state. The oldest
/// states are forgotten when all together grow beyond a bound.
class range_history {
 public:
  using words = std::vector<uint32_t>;
  static constexpr size_t max_words = size_t{1} << 21;

  explicit range_history(size_t words_of_range) : width_(words_of_range) {}

  void arrive(uint32_t state, words const& ranges);
  /// The state is left for one that is new: those that were drawn in between are out of reach.
  void leave(uint32_t state, uint32_t next, words const& ranges);
  /// What stands at a state that undo comes to, or redo.
  words after_undo(uint32_t state) const;
  words after_redo(uint32_t state) const;

  bool empty() const { return arrived_.empty() && left_.empty(); }
  /// About how much memory is held.
  size_t kept_words() const { return kept_words_; }

 private:
  struct snapshot {
    std::shared_ptr<words const> base;
    std::vector<number_runs> differences;  ///< for each word of a range; none when it is `base`
    size_t cost = 0;                       ///< in words
  };
  using snapshots = std::map<uint32_t, snapshot>;

  snapshot packed(words const& ranges);
  words unpacked(snapshot const& kept) const;
  void store(snapshots& in, uint32_t state, words const& ranges);
  void forget(snapshots& in, snapshots::iterator first, snapshots::iterator last);
  void stay_within_bound();

  size_t width_;
  snapshots arrived_;
  snapshots left_;  ///< only where they differ from those at the arrival
  std::shared_ptr<words const> base_;
  size_t kept_words_ = 0;
};

}  // namespace text
