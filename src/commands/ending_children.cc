#include "commands/ending_children.h"

#include "platform/desktop.h"

namespace commands {

ending_children& ending_children::shared() {
  static auto& children = *new ending_children;
  return children;
}

// Its pipes are closed at once, so that one that prints for ever ends by that already.
void ending_children::add(std::unique_ptr<child_process> child) {
  child->input().close();
  child->output().close();
  child->errors().close();
  child->terminate();
  children_.push_back(std::move(child));
  constexpr double period = 0.1;  // seconds
  if (timer_ == nullptr)
    timer_ = platform::desktop::current().loop().schedule(period, true, [this] { look(); });
}

void ending_children::look() {
  std::erase_if(children_, [](auto const& child) {
    if (child->has_ended()) return true;
    child->terminate();
    return false;
  });
  if (children_.empty()) timer_.reset();
}

void ending_children::kill_all() {
  children_.clear();
  timer_.reset();
}

}  // namespace commands
