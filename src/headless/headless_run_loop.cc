#include "headless/headless_run_loop.h"

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

void headless_run_loop::run_for(double seconds) {
  double const end = now_ + seconds;
  run_posted();
  while (!timers_.empty() && timers_.begin()->first.first <= end) {
    run_first_timer();
    run_posted();
  }
  now_ = end;
}

}  // namespace headless
