#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace platform {

/// A walk by Up and Down through what was typed into a field before. What stood in the field when
/// the walk began comes after the latest entry, so that it isn't lost.
class entry_walk {
 public:
  /// Latest first. The walk, if any, is over.
  void set_entries(std::vector<std::string> entries) {
    entries_ = std::move(entries);
    step_ = 0;
  }
  /// What is to stand in the field in which `shown` stands; that itself where there is no other.
  std::string older(std::string const& shown) {
    begin(shown);
    std::size_t next = step_ + 1;
    while (next <= entries_.size() && at(next) == shown) ++next;
    return next <= entries_.size() ? at(step_ = next) : shown;
  }
  std::string newer(std::string const& shown) {
    begin(shown);
    return step_ == 0 ? shown : at(--step_);
  }

 private:
  // What was edited begins another walk.
  void begin(std::string const& shown) {
    if (step_ != 0 && shown == at(step_)) return;
    step_ = 0;
    draft_ = shown;
  }
  std::string const& at(std::size_t step) const { return step == 0 ? draft_ : entries_[step - 1]; }

  std::vector<std::string> entries_;
  std::string draft_;
  std::size_t step_ = 0;  ///< 0 is the draft, 1 the latest entry
};

}  // namespace platform
