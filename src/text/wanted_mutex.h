#pragma once

#include <atomic>
#include <mutex>

namespace text {

/// A recursive mutex that tells whether another thread waits for it, so that long work under it
/// can give way. To release it alone does not: whoever waits has to wake up first, and meanwhile
/// the worker has it again.
class wanted_mutex {
 public:
  void lock() {
    if (mutex_.try_lock()) return;
    ++waiting_;
    mutex_.lock();
    --waiting_;
  }
  bool try_lock() { return mutex_.try_lock(); }
  void unlock() { mutex_.unlock(); }
  /// Any thread. Good for the moment.
  bool is_wanted() const { return waiting_.load(std::memory_order_relaxed) != 0; }

 private:
  std::recursive_mutex mutex_;
  std::atomic<int> waiting_ = 0;
};

}  // namespace text
