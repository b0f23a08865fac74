#pragma once

#include <functional>
#include <string>
#include <vector>

namespace platform {

/// How a program ended.
struct program_result {
  int error = 0;   ///< errno if it could not be started: ENOENT if there is none
  int status = 0;  ///< as waitpid(2) gives it
  std::string standard_output, standard_error;  ///< what it wrote there, the first 64 KiB of each
};

/// Runs a program that is found by PATH, with the open file `standard_input`, and waits for it,
/// calling `go_on` some fifty times a second. A program that has not
/// ended after `seconds`, or when that gives false, is asked to (SIGTERM) and waited for further.
/// Any thread.
program_result run_program(std::vector<std::string> const& arguments, int standard_input,
                           double seconds, std::function<bool()> const& go_on);

}  // namespace platform
