#pragma once

#include "commands/child_environment.h"

#include <cstddef>
#include <string>

/// Running fragments of shell code and scripts.
namespace commands {

struct shell_request {
  std::string script;      ///< for bash, or for what its first line names if that begins with #!
  std::string input = {};  ///< what it reads from standard input, UTF-8
  variables environment =
      {};  ///< over the program's own, of which nothing that begins with QN_ goes on
  std::string directory = {};  ///< to run in; "" for the program's own
};

struct shell_result {
  std::string output;      ///< standard output and standard error, in their order; bytes
  int status = 0;          ///< of its exit; -1 after a signal
  bool cancelled = false;  ///< the user has stopped it; the output is what had come by then
  std::string error;       ///< why it could not be run, or was ended; empty if nothing is wrong
};

/// Runs it in a process group of its own and returns when its output has ended. Handles events
/// meanwhile, as a platform::waiting::scope: Escape ends the group, first asking, after four
/// seconds by force. Input is written while output is read. Main thread only.
shell_result run_shell(shell_request const& request);

/// Output beyond this many bytes ends the group.
inline constexpr std::size_t most_output = std::size_t{64} << 20;

}  // namespace commands
