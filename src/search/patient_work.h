#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>

namespace search {

/// Work that may take long, such as a search with a user's pattern, on another thread, so that
/// windows don't freeze. Without a window (batch mode), and where the system gives no
/// thread, `do_patiently` does it at once. Main thread only.
///
/// `work` looks at its flag often and returns when that is set. It may run on when these functions
/// have returned, so all that it uses must belong to it; it is destroyed on the main thread. It
/// must leave the counts of text blocks alone.
///
/// What runs on does so at a low priority, and there are at most four such threads.
using interruptible_work = std::function<void(std::atomic<bool> const& cancelled)>;

/// When work returns once it is cancelled: a pattern may be in an attempt to match.
enum class stopping { soon, perhaps_late };

/// Handles events meanwhile, as a waiting::scope: no input comes in between but Escape, which
/// cancels it. What is still not done after half a second is shown as "Searching…", with a button
/// for that. Work that may stop late waits to begin while too many threads run on, and can be
/// cancelled then too. False if it was cancelled, or if other such work is under way. Throws
/// std::bad_alloc if the work has.
bool do_patiently(stopping stops, interruptible_work work);

/// Waits for `limit` and handles no events, for what is about to be drawn. False, with the work
/// cancelled, if it isn't done by then; also when there is no thread for it.
bool do_briefly(std::chrono::milliseconds limit, interruptible_work work);

class background_job;

/// Work that nobody waits for. It is cancelled when this object goes, and may run on then.
class work_aside {
 public:
  /// Null if there is no thread for it, or if what was cancelled before keeps too many.
  static std::unique_ptr<work_aside> begin(stopping stops, interruptible_work work);
  ~work_aside();

  bool is_done_within(std::chrono::milliseconds limit) const;
  /// Then memory has run out, and what was done is nothing.
  bool has_failed() const;

 private:
  explicit work_aside(std::shared_ptr<background_job> running) : running_(std::move(running)) {}

  std::shared_ptr<background_job> running_;
};

}  // namespace search
