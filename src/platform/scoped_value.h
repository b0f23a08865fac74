#pragma once

#include <utility>

namespace platform {

/// Gives a variable another value for the duration of a scope, also if an exception ends that:
/// where memory runs out, the window goes on with the next event.
template <typename T>
class scoped_value {
 public:
  scoped_value(T& variable, T value)
      : variable_(variable), former_(std::exchange(variable, std::move(value))) {}
  ~scoped_value() { variable_ = std::move(former_); }
  scoped_value(scoped_value const&) = delete;
  scoped_value& operator=(scoped_value const&) = delete;

 private:
  T& variable_;
  T former_;
};

}  // namespace platform
