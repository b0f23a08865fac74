#include "platform/waiting.h"

#include <utility>

namespace platform {
namespace {

waiting::task unless_gone(std::weak_ptr<void const> owner, waiting::task work) {
  return [owner = std::move(owner), work = std::move(work)] {
    if (!owner.expired()) work();
  };
}

}  // namespace

waiting::scope::scope(waiting& owner, task cancel, kind what)
    : owner_(owner), cancel_(std::move(cancel)), kind_(what) {
  if (!owner_.is_waiting()) owner_.since_ = owner_.loop_.now();
  owner_.scopes_.push_back(this);
  if (owner_.is_ending_) cancel_();
}

// What was held comes in a turn of its own, since who waited has yet to do what it waited for.
waiting::scope::~scope() {
  std::erase(owner_.scopes_, this);
  if (owner_.is_waiting()) return;
  owner_.former_ += owner_.loop_.now() - owner_.since_;
  if (!owner_.held_.empty()) owner_.run_later();
}

void waiting::deliver(held_task next) {
  bool const is_its_turn = held_.empty() || is_delivering_;
  if (is_waiting() || !is_its_turn) return hold(std::move(next));
  run(next.work);
}

void waiting::deliver(task work) {
  deliver(held_task{std::move(work)});
}

void waiting::run(task const& work) {
  struct restored {
    bool& flag;
    bool const former = std::exchange(flag, true);
    ~restored() { flag = former; }
  } const delivering{is_delivering_};
  work();
}

void waiting::deliver(std::weak_ptr<void const> owner, task work) {
  deliver(held_task{unless_gone(std::move(owner), std::move(work))});
}

void waiting::deliver_input(std::weak_ptr<void const> owner, task work) {
  deliver(held_task{unless_gone(std::move(owner), std::move(work)), true});
}

void waiting::post(std::weak_ptr<void const> owner, task work) {
  hold({unless_gone(std::move(owner), std::move(work))});
}

void waiting::deliver_in_pause(std::weak_ptr<void const> owner, task work) {
  in_pause_.push_back(unless_gone(std::move(owner), std::move(work)));
  wait_for_pause();
}

void waiting::wait_for_pause() {
  double const left = typed_ + pause - loop_.now();
  if (left > 0) {
    pause_timer_ = loop_.schedule(left, false, [this] { wait_for_pause(); });
  } else {
    for (task& work : std::exchange(in_pause_, {})) deliver(std::move(work));
  }
}

void waiting::hold(held_task next) {
  held_.push_back(std::move(next));
  if (!is_waiting()) run_later();
}

void waiting::run_later() {
  loop_.post([this] { run_held(); });
}

// A task that waits in its turn holds up the rest.
void waiting::run_held() {
  struct rest {
    waiting& owner;
    ~rest() {
      if (!owner.is_waiting() && !owner.held_.empty()) owner.run_later();
    }
  } const after_lack_of_memory{*this};
  while (!is_waiting() && !held_.empty()) {
    held_task const next = std::move(held_.front());
    held_.pop_front();
    run(next.work);
  }
}

bool waiting::escape() {
  if (!is_waiting()) return false;
  ++cancellations_;
  scopes_.back()->cancel_();
  return true;
}

bool waiting::interrupt() {
  return is_waiting() && scopes_.back()->kind_ == kind::program && escape();
}

void waiting::finish(task last) {
  is_ending_ = true;
  deliver(std::move(last));
  cancel_all();
}

// Until nothing waits: a panel may have opened a question of its own, which is all that cancelling
// it once ends.
void waiting::cancel_all() {
  constexpr double period = 0.05;  // seconds
  auto const scopes = scopes_;
  ++cancellations_;
  for (auto it = scopes.rbegin(); it != scopes.rend(); ++it) (*it)->cancel_();
  if (is_waiting()) cancel_timer_ = loop_.schedule(period, false, [this] { cancel_all(); });
}

void waiting::finish_input() {
  is_ending_ = true;  // so that nothing is asked
  scopes_.clear();
  for (held_task const& next : std::exchange(held_, {}))
    if (next.is_input) run(next.work);
}

double waiting::seconds_waited() const {
  return is_waiting() ? former_ + (loop_.now() - since_) : former_;
}

}  // namespace platform
