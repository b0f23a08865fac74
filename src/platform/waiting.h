#pragma once

#include "platform/run_loop.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <vector>

namespace platform {

/// What the program waits for while it handles events: the answer to an alert or a panel, the end
/// of a search or of a drag. Waiting code continues afterwards with the state it had before. So all
/// that would change a text, ask a question or take something away is held until nothing waits, and
/// then happens in the order in which it came: keys, clicks, drops and what an input method
/// composes; questions about files that others have changed; new bundles and themes; closed
/// windows; requests to quit.
///
///     waiting::scope const scope(desktop.waits(), [&] { cancelled = true; });   // waits
///     desktop.waits().deliver(weak_from_this(), [this] { look_at_file(); });    // is held
///
/// Escape isn't held, but cancels what waits. Main thread only.
class waiting {
 public:
  using task = std::function<void()>;
  enum class kind { work, program };  ///< a program is ended by Ctrl+C as well

  explicit waiting(run_loop& loop) : loop_(loop) {}
  waiting(waiting const&) = delete;
  waiting& operator=(waiting const&) = delete;

  /// Something waits as long as this lives. Scopes nest.
  class scope {
   public:
    /// `cancel` makes what waits end soon, as if the user had cancelled it. It is called from an
    /// event, may be called again, and may not destroy the scope.
    scope(waiting& owner, task cancel, kind what = kind::work);
    ~scope();
    scope(scope const&) = delete;
    scope& operator=(scope const&) = delete;

   private:
    friend class waiting;
    waiting& owner_;
    task cancel_;
    kind const kind_;
  };

  bool is_waiting() const { return !scopes_.empty(); }

  /// Runs the task now; or, while something waits or others are held, when it is its turn. What a
  /// task that runs delivers is part of it, and comes before the next one.
  void deliver(task work);
  /// The same, unless `owner` has gone by then.
  void deliver(std::weak_ptr<void const> owner, task work);
  /// The same for what the user does to a text, which isn't dropped with the display either.
  void deliver_input(std::weak_ptr<void const> owner, task work);
  /// Runs the task in a later turn of the loop, when nothing waits, unless `owner` has gone by
  /// then.
  void post(std::weak_ptr<void const> owner, task work);

  /// The user has typed, while nothing waits.
  void did_type() { typed_ = loop_.now(); }
  /// deliver(), once the user hasn't typed for `pause`: for questions that come by themselves,
  /// which keys meant for a text would answer.
  void deliver_in_pause(std::weak_ptr<void const> owner, task work);
  static constexpr double pause = 1;  // seconds

  /// The user has pressed Escape: cancels what waits innermost. False if nothing waits.
  bool escape();
  /// The user has pressed Ctrl+C: cancels the program that is waited for. False if what waits
  /// innermost is none.
  bool interrupt();
  /// How often the user has cancelled something that was waited for. Who does several such things
  /// in turn compares it, and then leaves the rest undone.
  std::uint64_t cancellations() const { return cancellations_; }

  /// Cancels all that waits, and all that would from now on; then what is held is done, and `last`
  /// after it.
  void finish(task last);
  /// The loop will not run again: processes the held input.
  void finish_input();
  bool is_ending() const { return is_ending_; }

  /// For how long anything has been waited for, all in all, by the loop's clock.
  double seconds_waited() const;

 private:
  struct held_task {
    task work;
    bool is_input = false;
  };
  void run(task const& work);
  void deliver(held_task next);
  void hold(held_task next);
  void run_later();
  void run_held();
  void wait_for_pause();
  void cancel_all();

  run_loop& loop_;
  std::vector<scope*> scopes_;  // outermost first
  std::deque<held_task> held_;
  bool is_ending_ = false, is_delivering_ = false;
  std::uint64_t cancellations_ = 0;
  double since_ = 0, former_ = 0;  // seconds: when the outermost began, and the ones before it
  double typed_ = -pause;
  std::vector<task> in_pause_;
  std::unique_ptr<timer> pause_timer_, cancel_timer_;
};

}  // namespace platform
