#include "search/project_find.h"

#include "platform/desktop.h"

#include <condition_variable>
#include <mutex>
#include <utility>

namespace search {
namespace {

using namespace std::chrono_literals;

constexpr double period = 0.03;             // seconds between looks at what has come
constexpr std::size_t most_waiting = 4000;  // matches, or files, that wait for a look

}  // namespace

// The texts go on the main thread, with the work.
struct project_find::shared {
  project_search_request request;
  std::vector<text::text_slice> texts;
  std::atomic<bool> stopped = false;
  std::mutex mutex;
  std::condition_variable taken;
  std::vector<file_result> results;
  std::size_t waiting = 0;
  bool is_done = false;
  std::vector<path::file_error> folders;

  void run(std::atomic<bool> const& cancelled) {
    auto const put = [&](file_result result) {
      std::unique_lock lock(mutex);
      while (waiting >= most_waiting && !cancelled && !stopped) taken.wait_for(lock, 20ms);
      waiting += 1 + result.matches.size();
      results.push_back(std::move(result));
      if (cancelled) stopped = true;
    };
    std::vector<path::file_error> errors;
    try {
      errors = search_project(request, put, stopped);
    } catch (std::bad_alloc const&) {
      std::lock_guard const lock(mutex);
      is_done = true;
      throw;
    }
    std::lock_guard const lock(mutex);
    folders = std::move(errors);
    is_done = true;
  }
};

std::unique_ptr<project_find> project_find::begin(project_search_request request,
                                                  std::vector<text::text_slice> texts,
                                                  observer watch) {
  std::atomic<bool> const never = false;
  file_searcher const check(request.query, never);  // throws
  std::unique_ptr<project_find> made(new project_find);
  made->watch_ = std::move(watch);
  made->shared_ = std::make_shared<shared>();
  made->shared_->request = std::move(request);
  made->shared_->texts = std::move(texts);
  made->work_ = work_aside::begin(
      stopping::perhaps_late,
      [state = made->shared_](std::atomic<bool> const& cancelled) { state->run(cancelled); });
  if (made->work_ == nullptr) return nullptr;
  made->timer_ = platform::desktop::current().loop().schedule(
      period, true, [find = made.get()] { find->look(); });
  return made;
}

project_find::~project_find() {
  stop();
}

void project_find::stop() {
  shared_->stopped = true;
}

bool project_find::has_failed() const {
  return work_->has_failed();
}

// Both observers may destroy this object.
void project_find::look() {
  std::vector<file_result> results;
  std::vector<path::file_error> folders;
  bool is_done = false;
  {
    std::lock_guard const lock(shared_->mutex);
    results = std::exchange(shared_->results, {});
    shared_->waiting = 0;
    is_done = shared_->is_done;
    folders = shared_->folders;
  }
  shared_->taken.notify_one();
  std::weak_ptr<char> const lives = lives_;
  observer const watch = watch_;
  if (is_done) timer_.reset();
  if (!results.empty()) watch.take(std::move(results));
  if (is_done && !lives.expired()) watch.end(std::move(folders));
}

}  // namespace search
