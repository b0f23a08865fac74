#pragma once

#include <functional>
#include <memory>

namespace platform {
class run_loop;
}

namespace projects {

/// Work that may wait for a disk or a network, on at most four threads, so that windows don't
/// freeze. What it has found is handed over on the main thread. A thread that hangs holds up
/// nothing but itself; nothing waits for it, not even the end of the program.
///
/// Main thread only. Without a thread to be had the work is done at once.
class background {
 public:
  /// Runs on the main thread.
  using answer = std::function<void()>;
  /// Runs on another thread, where it uses nothing but what it holds itself.
  using job = std::function<answer()>;

  /// The loop must outlive it.
  explicit background(platform::run_loop& loop);
  /// Jobs that haven't begun are dropped, and so is every answer that hasn't come.
  ~background();
  background(background const&) = delete;
  background& operator=(background const&) = delete;

  void run(job work);
  /// Whether an answer is to come.
  bool is_busy() const;

 private:
  struct shared;
  std::shared_ptr<shared> const shared_;
};

}  // namespace projects
