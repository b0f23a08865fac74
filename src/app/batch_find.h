#pragma once

#include "app/batch_options.h"

namespace app {

/// Looks for something in the files of folders and projects, or lists these, and prints what it
/// finds. The exit status: 0 if there was anything, 1 if not, 2 for a bad pattern, 3 if a file
/// could not be read or written.
int run_batch_find(batch_options const& options);

}  // namespace app
