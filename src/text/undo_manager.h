#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <stack>
#include <vector>

namespace text {

struct storage;

/// Turns a storage's flat history into the user's steps: it remembers at which mementos undo and
/// redo stop. Groups nest; a group that changed the text leaves one step in the group around it.
class undo_manager {
 public:
  struct node {
    std::vector<uint32_t> undo;  ///< mementos, in the order in which they were reached
    std::vector<uint32_t> redo;
    uint32_t memento;  ///< the storage's when the group was opened

    explicit node(unsigned long at) : memento(static_cast<uint32_t>(at)) {}
    uint32_t pop_undo();
    uint32_t pop_redo();
  };

  /// Opens the root group, which is never closed. The storage must outlive the manager.
  explicit undo_manager(text::storage& storage);
  undo_manager(undo_manager const&) = delete;
  undo_manager& operator=(undo_manager const&) = delete;

  void begin_group();
  /// Closes the innermost group. Each call matches a `begin_group`.
  void end_group();

  /// These look at the innermost open group only.
  bool can_undo() const;
  bool can_redo() const;
  /// Do nothing when there is nothing to do.
  void undo();
  void redo();

  /// The step that was just added, and began at this state, is of one run with the one that led to
  /// it, such as that of the letters of a word.
  void set_inside_run(uint32_t state);
  /// As far as the ends of runs, by at least one step where there is one; the number of steps.
  size_t undo_run();
  size_t redo_run();

  /// Makes the last two steps of the innermost open group one, if there are two and none to redo.
  void join_last_steps();
  /// Makes each open group one that begins now.
  void forget_steps();

  text::storage* storage;
  std::stack<node, std::deque<node>> stack;

 private:
  bool is_inside_run(uint32_t state) const;

  std::vector<bool> inside_runs_;  // by memento; states are never numbered again
};

/// Opens a group for the duration of a scope.
class undo_group {
 public:
  explicit undo_group(undo_manager& manager) : manager_(manager) { manager_.begin_group(); }
  ~undo_group() { manager_.end_group(); }
  undo_group(undo_group const&) = delete;
  undo_group& operator=(undo_group const&) = delete;

 private:
  undo_manager& manager_;
};

}  // namespace text
