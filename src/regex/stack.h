#pragma once

#include <cstddef>
#include <memory>
#include <utility>

namespace regex {

/// An array stack that grows. A push makes no element and copies none: it uncovers one for the
/// caller to fill, which holds whatever was there before. Memory is kept until the stack goes.
template <class T>
class stack {
 public:
  bool empty() const { return size_ == 0; }
  std::size_t size() const { return size_; }
  std::size_t bytes() const { return capacity_ * sizeof(T); }

  /// Valid until the next push.
  T& push() {
    if (size_ == capacity_) grow();
    return elements_[size_++];
  }
  T& top() { return elements_[size_ - 1]; }
  void pop() { --size_; }
  void truncate(std::size_t size) { size_ = size; }

 private:
  void grow() {
    std::size_t const capacity = capacity_ == 0 ? 32 : capacity_ * 2;
    auto elements = std::make_unique<T[]>(capacity);
    for (std::size_t i = 0; i < size_; ++i) elements[i] = std::move(elements_[i]);
    elements_ = std::move(elements);
    capacity_ = capacity;
  }

  std::unique_ptr<T[]> elements_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace regex
