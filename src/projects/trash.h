#pragma once

#include <optional>
#include <string>

#include "path/file_error.h"

namespace projects {

/// Moves a file or folder into the user's trash, as all programs of the desktop have it: that of
/// the home folder, or that of the file system which the file is on. A link is moved itself. Never
/// deletes and never copies: where there is no trash for it the file stays. `path` is absolute. Any
/// thread.
std::optional<path::file_error> move_to_trash(std::string const& path);

}  // namespace projects
