#include "text/undo_manager.h"

#include "text/storage.h"

namespace text {

namespace {

uint32_t pop(std::vector<uint32_t>& mementos) {
  uint32_t const last = mementos.back();
  mementos.pop_back();
  return last;
}

}  // namespace

uint32_t undo_manager::node::pop_undo() {
  return pop(undo);
}
uint32_t undo_manager::node::pop_redo() {
  return pop(redo);
}

undo_manager::undo_manager(text::storage& of) : storage(&of) {
  begin_group();
}

void undo_manager::begin_group() {
  stack.emplace(storage->current_memento);
}

void undo_manager::end_group() {
  bool const redo_was_empty = stack.top().redo.empty();
  uint32_t const start = stack.top().memento;
  stack.pop();
  node& parent = stack.top();
  if (start != storage->current_memento) {
    parent.undo.push_back(start);
    parent.redo.clear();
    // What began there before was undone, perhaps in the middle of a run.
    if (start < inside_runs_.size()) inside_runs_[start] = false;
  }
  if (!redo_was_empty) parent.redo.clear();
}

bool undo_manager::can_undo() const {
  return !stack.empty() && !stack.top().undo.empty();
}
bool undo_manager::can_redo() const {
  return !stack.empty() && !stack.top().redo.empty();
}

void undo_manager::undo() {
  if (!can_undo()) return;
  stack.top().redo.push_back(storage->current_memento);
  uint32_t const target = stack.top().pop_undo();
  while (storage->current_memento != target) storage->undo();
}

void undo_manager::redo() {
  if (!can_redo()) return;
  stack.top().undo.push_back(storage->current_memento);
  uint32_t const target = stack.top().pop_redo();
  while (storage->current_memento != target) storage->redo();
}

void undo_manager::set_inside_run(uint32_t state) {
  if (state >= inside_runs_.size()) inside_runs_.resize(state + size_t{1});
  inside_runs_[state] = true;
}

bool undo_manager::is_inside_run(uint32_t state) const {
  return state < inside_runs_.size() && inside_runs_[state];
}

size_t undo_manager::undo_run() {
  size_t steps = 0;
  for (bool goes_on = true; goes_on && can_undo(); ++steps) {
    undo();
    goes_on = is_inside_run(storage->current_memento);
  }
  return steps;
}

size_t undo_manager::redo_run() {
  size_t steps = 0;
  for (bool goes_on = true; goes_on && can_redo(); ++steps) {
    redo();
    goes_on = is_inside_run(storage->current_memento);
  }
  return steps;
}

void undo_manager::join_last_steps() {
  node& group = stack.top();
  if (group.undo.size() >= 2 && group.redo.empty()) group.undo.pop_back();
}

void undo_manager::forget_steps() {
  size_t const groups = stack.size();
  inside_runs_ = {};
  stack = {};
  while (stack.size() < groups) begin_group();
}

}  // namespace text
