#pragma once

#include <optional>
#include <string>

#include "path/file_error.h"

/// What the user does to files in a project's tree. Nothing that exists is ever overwritten: where
/// a name is taken the answer is EEXIST. Paths are absolute; a link is meant itself. May take as
/// long as the disk does. Any thread.
namespace projects {

using operation_error = std::optional<path::file_error>;

/// Why no file can have this name, for the user; "" if it can.
std::string fault_of_name(std::string const& name);

operation_error make_file(std::string const& path);
operation_error make_folder(std::string const& path);
/// Also to another file system; then it is copied first. EINVAL for a folder into itself.
operation_error move_file(std::string const& from, std::string const& to);
/// A folder with all that is in it. Where it fails nothing is left at `to`.
operation_error copy_file(std::string const& from, std::string const& to);

/// A path in the folder for a copy of `name` that nothing has yet: "name copy.txt", "name copy
/// 2.txt"; `name` itself if that is free and `may_be_same`.
std::string path_for_copy(std::string const& folder, std::string const& name, bool may_be_same);

}  // namespace projects
