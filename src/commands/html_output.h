#pragma once

#include "commands/shell.h"
#include "plist/value.h"

#include <string>

namespace commands {

/// Where commands show their output as a page. Windows implement it; whoever runs commands reaches
/// it by current(). Main thread only.
///
///     if (auto* const pages = commands::html_output::current())
///       pages->run_command(command, input, environment, directory);
class html_output {
 public:
  virtual ~html_output() = default;

  /// Null where there are no windows, as in batch mode.
  static html_output* current() { return current_; }
  static void set_current(html_output* pages) { current_ = pages; }  // not owned

  /// Starts the command of a bundle (its "command", "name", "uuid", "dontFollowNewOutput" and
  /// "autoScrollOutput" are read) and shows what it prints while it runs, in the window of its
  /// previous run if that has ended. Returns at once. `input` is UTF-8, `directory` as in
  /// shell_request.
  virtual void run_command(plist::value const& command, std::string input, variables environment,
                           std::string directory) = 0;
  /// Shows what the command has printed.
  virtual void show_output(std::string text, plist::value const& command, variables environment,
                           std::string directory) = 0;

 private:
  static inline html_output* current_ = nullptr;
};

}  // namespace commands
