#pragma once

#include <functional>
#include <memory>

namespace platform {

/// A timer that runs as long as this handle lives.
class timer {
 public:
  virtual ~timer() = default;
};

/// A descriptor that is watched as long as this handle lives.
class descriptor_watch {
 public:
  virtual ~descriptor_watch() = default;
};

/// The loop in which all of the logic runs. Main thread only, but for post().
class run_loop {
 public:
  virtual ~run_loop() = default;

  /// Runs `task` on the main thread at its next turn. May be called on any thread.
  virtual void post(std::function<void()> task) = 0;

  /// Calls `task` after `seconds`, and then again and again when `repeats` is set. The call may
  /// destroy the handle.
  virtual std::unique_ptr<timer> schedule(double seconds, bool repeats,
                                          std::function<void()> task) = 0;

  /// Calls `task` at each turn at which the descriptor can be read. The call may destroy the
  /// handle.
  virtual std::unique_ptr<descriptor_watch> watch_descriptor(int descriptor,
                                                             std::function<void()> task) = 0;

  /// Monotonic seconds since some moment; what schedule() counts in.
  virtual double now() const = 0;

  /// Handles what is due, waiting at most `seconds` for something to become due. The caller
  /// has a waiting::scope.
  virtual void run_for(double seconds) = 0;
};

}  // namespace platform
