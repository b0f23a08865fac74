#pragma once

#include <functional>

namespace widgets {

/// Tells that exit() is called while this lives, as Qt does when the connection to the display
/// breaks: the server has died, or has been told to drop the program. One object at a time; main
/// thread only.
class SuddenExit {
 public:
  /// `on_exit` is called with the stack as it stands, so it may rely on nothing but data that is
  /// whole between two events, and must not use the display. False makes the program's status that
  /// of a failure, whatever exit() was given.
  explicit SuddenExit(std::function<bool()> on_exit);
  ~SuddenExit();
  SuddenExit(SuddenExit const&) = delete;
  SuddenExit& operator=(SuddenExit const&) = delete;

 private:
  static void run();

  std::function<bool()> on_exit_;
};

}  // namespace widgets
