#include "search/project_search.h"

#include "platform/system/start_thread.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <new>
#include <thread>

namespace search {
namespace {

constexpr std::size_t files_at_once = 8;         // that a thread takes
constexpr std::size_t batches_in_advance = 512;  // of the first one that isn't done

class parallel_search {
 public:
  parallel_search(project_search_request const& request, std::atomic<bool> const& cancelled)
      : request_(request), walk_(request.roots, request.files), cancelled_(cancelled) {}

  std::vector<path::file_error> run(std::function<void(file_result)> const& take) {
    // A bad pattern is reported here, and not by a thread.
    file_searcher own(request_.query, cancelled_);
    unsigned const wanted =
        request_.threads ? request_.threads : std::max(1u, std::thread::hardware_concurrency());
    std::vector<std::thread> threads(wanted);
    bool has_any = false;
    for (std::thread& thread : threads)
      if (platform::start_thread(thread, [this] { work(); })) has_any = true;
    joiner const waits{*this, threads};
    for (;;) {
      std::vector<file_result> results;
      if (!has_any) {
        if (!search_next(own)) break;
      }
      if (!next_results(results)) break;
      for (file_result& result : results)
        if (!cancelled_) take(std::move(result));
      if (cancelled_) break;
    }
    if (failed_) throw std::bad_alloc();
    return walk_.errors();
  }

 private:
  struct batch {
    std::vector<file_result> results;
    bool is_done = false;
  };

  // Whatever `take` throws, no thread is left.
  struct joiner {
    parallel_search& owner;
    std::vector<std::thread>& threads;
    ~joiner() {
      {
        std::lock_guard const lock(owner.mutex_);
        owner.stops_ = true;
      }
      owner.room_.notify_all();
      for (std::thread& thread : threads)
        if (thread.joinable()) thread.join();
    }
  };

  void work() {
    try {
      file_searcher searcher(request_.query, cancelled_);
      while (search_next(searcher)) continue;
    } catch (std::bad_alloc const&) {
      std::lock_guard const lock(mutex_);
      failed_ = stops_ = true;
      done_.notify_all();
      room_.notify_all();
    }
  }

  // False when there is nothing more to do.
  bool search_next(file_searcher& searcher) {
    std::vector<std::string> paths;
    std::size_t number = 0;
    {
      std::unique_lock lock(mutex_);
      room_.wait(lock, [this] { return stops_ || batches_.size() < batches_in_advance; });
      if (stops_ || is_at_end_) return false;
      std::string path;
      while (paths.size() < files_at_once && !cancelled_) {
        if (!walk_.next(path)) break;
        paths.push_back(path);
      }
      is_at_end_ = paths.size() < files_at_once;
      if (is_at_end_) done_.notify_all();
      if (paths.empty()) return false;
      number = first_ + batches_.size();
      batches_.emplace_back();
    }
    batch found;
    for (std::string const& path : paths) {
      auto const open = request_.open.find(path);
      found.results.push_back(open == request_.open.end() ? searcher.search(path)
                                                          : searcher.search(path, open->second));
    }
    std::lock_guard const lock(mutex_);
    batches_[number - first_].results = std::move(found.results);
    batches_[number - first_].is_done = true;
    if (number == first_) done_.notify_all();
    return true;
  }

  // False at the end.
  bool next_results(std::vector<file_result>& results) {
    std::unique_lock lock(mutex_);
    done_.wait(lock, [this] {
      return failed_ || (batches_.empty() ? is_at_end_ : batches_.front().is_done);
    });
    if (failed_ || batches_.empty()) return false;
    results = std::move(batches_.front().results);
    batches_.pop_front();
    ++first_;
    room_.notify_one();
    return true;
  }

  project_search_request const& request_;
  std::mutex mutex_;
  std::condition_variable done_, room_;
  projects::file_walk walk_;
  std::deque<batch> batches_;  // those that were begun, from number `first_` on
  std::size_t first_ = 0;
  bool is_at_end_ = false, stops_ = false, failed_ = false;
  std::atomic<bool> const& cancelled_;
};

}  // namespace

std::vector<path::file_error> search_project(project_search_request const& request,
                                             std::function<void(file_result)> const& take,
                                             std::atomic<bool> const& cancelled) {
  return parallel_search(request, cancelled).run(take);
}

}  // namespace search
