#include "projects/background.h"

#include "platform/run_loop.h"
#include "platform/system/start_thread.h"

#include <deque>
#include <mutex>
#include <new>
#include <thread>

namespace projects {
namespace {

constexpr int most_threads = 4;

}  // namespace

// The threads own it too. Jobs are destroyed without the mutex, since they may hold large trees.
struct background::shared : std::enable_shared_from_this<shared> {
  std::mutex mutex;
  platform::run_loop* loop;  // null when the owner has gone
  std::deque<job> waiting;
  int threads = 0;
  std::size_t unanswered = 0;  // main thread only

  explicit shared(platform::run_loop& l) : loop(&l) {}

  void deliver(answer const& found) {
    --unanswered;
    if (found) found();
  }

  void work() {
    for (;;) {
      job next;
      {
        std::lock_guard const lock(mutex);
        if (loop == nullptr || waiting.empty()) {
          --threads;
          return;
        }
        next = std::move(waiting.front());
        waiting.pop_front();
      }
      answer found;
      try {
        found = next();
      } catch (std::bad_alloc const&) {
        // As if nothing had been found.
      }
      next = nullptr;
      std::lock_guard const lock(mutex);
      if (loop == nullptr) continue;
      loop->post([weak = weak_from_this(), found = std::move(found)] {
        if (auto const self = weak.lock(); self && self->loop != nullptr) self->deliver(found);
      });
    }
  }
};

background::background(platform::run_loop& loop) : shared_(std::make_shared<shared>(loop)) {}

background::~background() {
  std::deque<job> dropped;
  std::lock_guard const lock(shared_->mutex);
  shared_->loop = nullptr;
  dropped.swap(shared_->waiting);
}

void background::run(job work) {
  ++shared_->unanswered;
  bool needs_thread = false;
  {
    std::lock_guard const lock(shared_->mutex);
    shared_->waiting.push_back(std::move(work));
    needs_thread = shared_->threads < most_threads;
    if (needs_thread) ++shared_->threads;
  }
  if (!needs_thread) return;
  std::thread thread;
  if (platform::start_thread(thread, [self = shared_] { self->work(); }))
    thread.detach();
  else
    shared_->work();
}

bool background::is_busy() const {
  return shared_->unanswered != 0;
}

}  // namespace projects
