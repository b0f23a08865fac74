#include "headless/headless_run_loop.h"

#include <poll.h>

#include <algorithm>

namespace headless {

class headless_run_loop::scheduled_timer : public platform::timer {
 public:
  scheduled_timer(headless_run_loop& loop, std::uint64_t id) : loop_(loop), id_(id) {}
  ~scheduled_timer() override {
    auto const it = loop_.due_by_id_.find(id_);
    if (it == loop_.due_by_id_.end()) return;
    loop_.timers_.erase({it->second, id_});
    loop_.due_by_id_.erase(it);
  }

 private:
  headless_run_loop& loop_;
  std::uint64_t id_;
};

class headless_run_loop::watched_descriptor : public platform::descriptor_watch {
 public:
  watched_descriptor(headless_run_loop& loop, int number, std::function<void()> task)
      : loop_(loop), number_(number), task_(std::move(task)) {
    loop_.descriptors_.push_back(this);
  }
  ~watched_descriptor() override { std::erase(loop_.descriptors_, this); }

  bool can_be_read() const {
    pollfd state{number_, POLLIN, 0};
    return poll(&state, 1, 0) == 1;
  }
  std::function<void()> task() const { return task_; }

 private:
  headless_run_loop& loop_;
  int number_;
  std::function<void()> task_;
};

std::unique_ptr<platform::descriptor_watch> headless_run_loop::watch_descriptor(
    int descriptor, std::function<void()> task) {
  return std::make_unique<watched_descriptor>(*this, descriptor, std::move(task));
}

void headless_run_loop::poll_descriptors() {
  for (watched_descriptor* const watched : std::vector(descriptors_)) {
    // The task of one may drop another.
    bool const is_watched =
        std::find(descriptors_.begin(), descriptors_.end(), watched) != descriptors_.end();
    if (is_watched && watched->can_be_read()) watched->task()();
  }
}

void headless_run_loop::post(std::function<void()> task) {
  std::lock_guard const lock(posted_mutex_);
  posted_.push_back(std::move(task));
}

std::unique_ptr<platform::timer> headless_run_loop::schedule(double seconds, bool repeats,
                                                             std::function<void()> task) {
  std::uint64_t const id = next_id_++;
  double const due = now_ + std::max(seconds, 0.0);
  timers_.emplace(key{due, id}, entry{std::max(seconds, 0.001), repeats, std::move(task)});
  due_by_id_.emplace(id, due);
  return std::make_unique<scheduled_timer>(*this, id);
}

void headless_run_loop::run_posted() {
  std::vector<std::function<void()>> tasks;
  {
    std::lock_guard const lock(posted_mutex_);
    tasks.swap(posted_);
  }
  for (auto const& task : tasks) task();
}

void headless_run_loop::run_first_timer() {
  auto node = timers_.extract(timers_.begin());
  auto const [due, id] = node.key();
  now_ = std::max(now_, due);
  std::function<void()> const task = node.mapped().task;
  if (node.mapped().repeats) {
    double const next = now_ + node.mapped().interval;
    node.key() = {next, id};
    due_by_id_[id] = next;
    timers_.insert(std::move(node));
  } else {
    due_by_id_.erase(id);
  }
  task();
}

void headless_run_loop::run(double seconds, bool look_at_descriptors) {
  double const end = now_ + seconds;
  if (look_at_descriptors) poll_descriptors();
  run_posted();
  while (!timers_.empty() && timers_.begin()->first.first <= end) {
    run_first_timer();
    run_posted();
  }
  now_ = std::max(now_, end);  // a task may have run the loop for longer
}

}  // namespace headless
