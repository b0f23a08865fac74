#include "search/patient_work.h"

#include "platform/desktop.h"
#include "platform/system/start_thread.h"

#include <sys/resource.h>
#include <unistd.h>

#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>
#include <new>
#include <thread>

namespace search {
namespace {

using namespace std::chrono_literals;

constexpr auto silent_wait = 20ms;        // short work is over before anything else happens
constexpr auto wait_before_show = 500ms;  // from the start
constexpr double events_period = 0.01;    // seconds
constexpr auto patience_with_stopping = 10ms;

constexpr std::size_t most_abandoned = 3;
// Of those that work which nobody waits for may begin beside.
constexpr std::size_t most_abandoned_aside = 1;

}  // namespace

// The thread owns it too, and there is no wait for the end of one that has stepped back: that would
// be waiting for a processor at its low priority.
class background_job : public std::enable_shared_from_this<background_job> {
 public:
  background_job(stopping stops, interruptible_work work) : stops_(stops), work_(std::move(work)) {}

  stopping stops() const { return stops_; }

  bool has_started() const { return started_; }
  bool start() {
    std::thread thread;
    started_ = platform::start_thread(thread, [self = shared_from_this()] { self->run(); });
    if (started_) thread.detach();
    return started_;
  }
  bool is_done() const { return done_; }
  // Then memory has run out, and what was done is nothing.
  bool has_failed() const { return failed_; }
  bool is_done_within(std::chrono::milliseconds wait) {
    std::unique_lock lock(mutex_);
    return ended_.wait_for(lock, wait, [this] { return is_done(); });
  }
  void cancel() { cancelled_ = true; }
  // Leaves the processors to those that are waited for, but not as long as can be: in the
  // kernel it may hold the lock of the program's memory.
  void step_back() {
    constexpr int low = 5;
    if (pid_t const thread = thread_id_) setpriority(PRIO_PROCESS, static_cast<id_t>(thread), low);
  }
  // Once it is done.
  void drop_work() { work_ = nullptr; }

 private:
  void run() {
    thread_id_ = gettid();
    try {
      work_(cancelled_);
    } catch (std::bad_alloc const&) {
      failed_ = true;
    }
    thread_id_ = 0;
    std::lock_guard const lock(mutex_);
    done_ = true;
    ended_.notify_one();
  }

  stopping stops_;
  interruptible_work work_;
  bool started_ = false;
  std::atomic<bool> cancelled_ = false, done_ = false, failed_ = false;
  std::atomic<pid_t> thread_id_ = 0;  // while it works
  std::mutex mutex_;
  std::condition_variable ended_;
};

namespace {

// Jobs that were cancelled in an attempt to match that takes its time. Never destroyed as a whole:
// the program may end before they do.
std::list<std::shared_ptr<background_job>>& abandoned() {
  static auto* const jobs = new std::list<std::shared_ptr<background_job>>;
  return *jobs;
}

bool is_running = false;

bool is_room_for(background_job const& next, std::size_t most = most_abandoned) {
  abandoned().remove_if([](auto const& old) {
    if (old->is_done()) old->drop_work();
    return old->is_done();
  });
  return next.stops() == stopping::soon || abandoned().size() < most;
}

void leave(std::shared_ptr<background_job> running, std::chrono::milliseconds patience) {
  running->cancel();
  if (running->is_done_within(patience)) return running->drop_work();
  running->step_back();
  abandoned().push_back(std::move(running));
}

enum class outcome { done, cancelled, no_thread };

outcome wait_for(background_job& running) {
  platform::desktop& desktop = platform::desktop::current();
  platform::busy_panel& panel = desktop.busy();
  bool cancelled = false;
  platform::waiting::scope const scope(desktop.waits(), [&] { cancelled = true; });
  auto const show_at = std::chrono::steady_clock::now() - silent_wait + wait_before_show;
  bool shown = false;
  outcome result = outcome::cancelled;
  while (!cancelled) {
    if (!running.has_started() && is_room_for(running) && !running.start())
      result = outcome::no_thread;
    if (running.is_done_within(0ms)) result = outcome::done;
    if (result != outcome::cancelled) break;
    if (!shown && std::chrono::steady_clock::now() >= show_at) {
      shown = true;
      panel.show("Searching\u2026");
    }
    if (panel.handle_events(events_period)) break;
  }
  panel.end();
  return result;
}

}  // namespace

bool do_patiently(stopping stops, interruptible_work work) {
  if (is_running) return false;
  std::atomic<bool> const never = false;
  outcome result = outcome::no_thread;
  if (platform::desktop::current().busy().is_wanted()) {
    is_running = true;
    auto running = std::make_shared<background_job>(stops, work);
    bool const begun = is_room_for(*running) && running->start();
    bool const done = begun && running->is_done_within(silent_wait);
    result = done ? outcome::done : wait_for(*running);
    is_running = false;
    bool const failed = result == outcome::done && running->has_failed();
    if (running->has_started()) leave(std::move(running), patience_with_stopping);
    if (failed) throw std::bad_alloc();
  }
  if (result == outcome::no_thread) work(never);
  return result != outcome::cancelled;
}

bool do_briefly(std::chrono::milliseconds limit, interruptible_work work) {
  if (!platform::desktop::current().busy().is_wanted()) {
    std::atomic<bool> const never = false;
    work(never);
    return true;
  }
  auto running = std::make_shared<background_job>(stopping::perhaps_late, std::move(work));
  if (!is_room_for(*running) || !running->start()) return false;
  bool const done = running->is_done_within(limit) && !running->has_failed();
  leave(std::move(running), 0ms);
  return done;
}

std::unique_ptr<work_aside> work_aside::begin(stopping stops, interruptible_work work) {
  auto running = std::make_shared<background_job>(stops, std::move(work));
  if (!is_room_for(*running, most_abandoned_aside) || !running->start()) return nullptr;
  return std::unique_ptr<work_aside>(new work_aside(std::move(running)));
}

work_aside::~work_aside() {
  leave(std::move(running_), 0ms);
}

bool work_aside::is_done_within(std::chrono::milliseconds limit) const {
  return running_->is_done_within(limit);
}

bool work_aside::has_failed() const {
  return running_->has_failed();
}

}  // namespace search
