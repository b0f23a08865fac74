#pragma once

#include "platform/run_loop.h"

#include <cstdint>
#include <map>
#include <mutex>
#include <vector>

namespace headless {

/// A run loop on a clock of its own, which moves only when run_for() says so: ten seconds pass in
/// no time, and tests see the same order of events in every run. Descriptors are looked at when
/// run_for() begins.
class headless_run_loop : public platform::run_loop {
 public:
  void post(std::function<void()> task) override;
  std::unique_ptr<platform::timer> schedule(double seconds, bool repeats,
                                            std::function<void()> task) override;
  std::unique_ptr<platform::descriptor_watch> watch_descriptor(int descriptor,
                                                               std::function<void()> task) override;
  double now() const override { return now_; }
  /// Moves the clock on by `seconds`, running what falls due on the way.
  void run_for(double seconds) override { run(seconds, true); }

  /// Runs what was posted, without moving the clock.
  void run_posted();
  /// Runs what was posted and the timers that are due; no descriptor is looked at, which takes a
  /// system call.
  void run_due() { run(0, false); }

 private:
  class watched_descriptor;
  class scheduled_timer;
  struct entry {
    double interval = 0;
    bool repeats = false;
    std::function<void()> task;
  };
  using key = std::pair<double, std::uint64_t>;  // due time, then order of scheduling

  void run(double seconds, bool look_at_descriptors);
  void run_first_timer();
  void poll_descriptors();

  double now_ = 0;
  std::vector<watched_descriptor*> descriptors_;
  std::uint64_t next_id_ = 0;
  std::map<key, entry> timers_;
  std::map<std::uint64_t, double> due_by_id_;
  std::mutex posted_mutex_;
  std::vector<std::function<void()>> posted_;  // guarded by posted_mutex_
};

}  // namespace headless
