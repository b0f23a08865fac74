#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace text {

/// Numbers kept as runs of equal steps. Lines and columns of what is typed in many lines at once
/// are one such run as a rule; numbers without any rule take three words for each two. Numbers
/// wrap round, so that steps may lead downward.
class number_runs {
 public:
  void push_back(uint32_t number) {
    ++size_;
    if (runs_.empty() || !runs_.back().take(number)) runs_.push_back({number, 0, 1});
  }

  size_t size() const { return size_; }
  size_t words() const { return runs_.size() * sizeof(run) / sizeof(uint32_t); }
  bool operator==(number_runs const&) const = default;

  template <typename Visit>
  void visit(Visit visit) const {
    for (run const& each : runs_) {
      uint32_t number = each.first;
      for (uint32_t left = each.count; left != 0; --left, number += each.step) visit(number);
    }
  }
  std::vector<uint32_t> numbers() const {
    std::vector<uint32_t> result;
    result.reserve(size_);
    visit([&](uint32_t number) { result.push_back(number); });
    return result;
  }

 private:
  struct run {
    uint32_t first, step, count;

    bool take(uint32_t number) {
      if (count == 1) step = number - first;
      if (number != first + step * count) return false;
      ++count;
      return true;
    }
    bool operator==(run const&) const = default;
  };

  std::vector<run> runs_;
  size_t size_ = 0;
};

}  // namespace text
