#pragma once

#include "commands/child_process.h"
#include "platform/run_loop.h"

#include <memory>
#include <vector>

namespace commands {

/// Commands that nobody waits for any more, on their way to their end: they get their signals
/// while the run loop goes on. Main thread only.
class ending_children {
 public:
  static ending_children& shared();

  void add(std::unique_ptr<child_process> child);
  /// At the end of the program, or of the desktop: what hasn't ended is killed.
  void kill_all();
  std::size_t count() const { return children_.size(); }

 private:
  void look();

  std::vector<std::unique_ptr<child_process>> children_;
  std::unique_ptr<platform::timer> timer_;
};

}  // namespace commands
