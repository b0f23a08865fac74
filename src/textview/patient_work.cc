#include "textview/patient_work.h"

#include "platform/desktop.h"

#include <chrono>
#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>
#include <thread>

namespace {

using namespace std::chrono_literals;

constexpr auto silent_wait = 20ms;        // short work is over before anything else happens
constexpr auto wait_before_show = 500ms;  // from the start
constexpr double events_period = 0.01;    // seconds
constexpr auto patience_with_stopping = 10ms;

struct job {
  explicit job(std::function<void(std::atomic<bool> const&)> todo) : work(std::move(todo)) {}
  ~job() {
    if (thread.joinable()) thread.join();
  }

  void start() {
    thread = std::thread([this] {
      work(cancelled);
      std::lock_guard const lock(mutex);
      done = true;
      ended.notify_one();
    });
  }
  bool is_done_within(std::chrono::milliseconds wait) {
    std::unique_lock lock(mutex);
    return ended.wait_for(lock, wait, [this] { return done; });
  }

  std::function<void(std::atomic<bool> const&)> work;
  std::atomic<bool> cancelled = false;
  std::mutex mutex;
  std::condition_variable ended;
  bool done = false;
  std::thread thread;
};

// Jobs that were cancelled in an attempt to match that takes its time. Never destroyed as a whole:
// the program may end before they do.
std::list<std::unique_ptr<job>>& abandoned() {
  static auto* const jobs = new std::list<std::unique_ptr<job>>;
  return *jobs;
}

bool is_running = false;

// True if the job came to its end.
bool wait_for(job& running) {
  platform::busy_panel& panel = platform::desktop::current().busy();
  auto const show_at = std::chrono::steady_clock::now() - silent_wait + wait_before_show;
  bool shown = false, done = false, cancelled = false;
  while (!(done = running.is_done_within(0ms)) && !cancelled) {
    cancelled = panel.handle_events(events_period);
    if (shown || std::chrono::steady_clock::now() < show_at) continue;
    shown = true;
    panel.show("Searching\u2026");
  }
  panel.end();
  return done;
}

}  // namespace

bool do_patiently(std::function<void(std::atomic<bool> const&)> work) {
  abandoned().remove_if([](auto const& old) { return old->is_done_within(0ms); });
  if (is_running) return false;
  if (!platform::desktop::current().busy().is_wanted()) {
    std::atomic<bool> const never = false;
    work(never);
    return true;
  }
  is_running = true;
  auto running = std::make_unique<job>(std::move(work));
  running->start();
  bool const done = running->is_done_within(silent_wait) || wait_for(*running);
  is_running = false;
  running->cancelled = true;
  if (!running->is_done_within(patience_with_stopping)) abandoned().push_back(std::move(running));
  return done;
}
