#pragma once

#include "commands/finished_command.h"

namespace commands {

/// What commands need of the window in which a text view runs them. Main thread only.
class command_owner {
 public:
  /// Saves what the command wants saved. False if it isn't to run then; the user knows why.
  virtual bool willExecuteCommand(command_options const& command) = 0;
  /// Whether somebody else takes what the command has written, so that the view doesn't.
  virtual bool takesOutput(finished_command const& command) = 0;
  virtual void openAsNewDocument(text::text_block const& text) = 0;

 protected:
  ~command_owner() = default;
};

}  // namespace commands
