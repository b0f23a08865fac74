#pragma once

#include "commands/shell.h"
#include "platform/responder.h"

namespace commands {

/// The environment of commands: the user's own variables (WynShellVariables), what
/// the responders from `first` on contribute, the nearest one winning, and of the program itself
/// QN_FULLNAME and QN_APP_PATH.
variables environment_for(platform::responder* first);

}  // namespace commands
