#pragma once

#include "commands/command_options.h"
#include "text/storage.h"

#include <string>

namespace commands {

/// A command that has run.
struct finished_command {
  /// What it has written.
  text::text_block text() const;

  command_options const& options;
  disposition output;                   ///< where its text goes, by its options or its status
  text::storage const* like = nullptr;  ///< with whose text up to `same` the output begins
  text::pos same = {};
  text::text_block rest = {};  ///< what comes after that
  int status = 0;              ///< -1 after a signal, or if it couldn't be started
  bool cancelled = false;
  /// Why it couldn't be run, was ended, or has no text; empty if nothing is wrong.
  std::string error = {};
};

}  // namespace commands
