#pragma once

#include "commands/child_environment.h"
#include "platform/responder.h"

namespace commands {

/// The environment of commands: the user's own variables (WynShellVariables), what
/// the responders from `first` on contribute, the nearest one winning, and of the program itself
/// QN_FULLNAME and QN_APP_PATH.
variables environment_for(platform::responder* first);

/// The folder in which a command with these variables runs: that of the document, unless it is
/// gone; "" for the program's own.
std::string directory_for(variables const& environment);

}  // namespace commands
