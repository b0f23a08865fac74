#pragma once

#include "commands/command_options.h"
#include "text/text_block.h"

#include <string>

namespace commands {

/// A command that has run.
struct finished_command {
  command_options const& options;
  disposition output;     ///< where its text goes, by its options or its status
  text::text_block text;  ///< what it has written
  int status = 0;         ///< -1 after a signal, or if it couldn't be started
  bool cancelled = false;
  /// Why it couldn't be run, was ended, or has no text; empty if nothing is wrong.
  std::string error;
};

}  // namespace commands
