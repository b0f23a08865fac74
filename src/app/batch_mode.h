#pragma once

#include "app/batch_options.h"

namespace app {

/// Runs the editor without windows on each file in turn: performs macros, saves, prints. What it
/// prints goes to standard output, everything else to standard error. Returns the exit status: 0
/// done, 1 a beep under --strict, 2 wrong usage, 3 a file could not be read or written.
int run_batch_mode(batch_options const& options);

}  // namespace app
