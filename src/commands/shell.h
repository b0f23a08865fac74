#pragma once

#include "commands/child_environment.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

/// Running fragments of shell code and scripts.
namespace commands {

/// Gives the next piece of what a command reads, good until the next call; empty at the end.
using input_source = std::function<std::string_view()>;
/// Takes the next piece of what it writes.
using output_sink = std::function<void(std::string_view)>;

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
/// meanwhile, as a platform::waiting::scope: Escape and Ctrl+C ask whether to end the group, which
/// takes four seconds at most. Input is written while output is read. Main thread only.
shell_result run_shell(shell_request const& request);

/// The same with input and output in pieces, in place of `request.input` and `output`.
shell_result run_shell(shell_request const& request, input_source const& source,
                       output_sink const& sink);

/// Text of `text`, which must outlive it, as a source.
input_source source_of(std::string const& text);

/// More output than this many megabytes, and than twice the input, is taken only if the user says
/// so.
inline constexpr char const* most_output_key = "WynCommandOutputLimit";

}  // namespace commands
