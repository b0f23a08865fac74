#pragma once

#include <string>

/// Changes of the file system other than writing: making and removing. True on success. Any thread.
namespace path {

/// Makes an empty file of mode 0600 that no other process has or gets, in the folder that the
/// environment variable TMPDIR names, else in /tmp, and gives its path; "" on failure. ".XXXXXX" in
/// the name, or after it where it has none, becomes a part that no other file has. An empty name
/// gives the folder.
std::string temp(std::string const& name);

/// Makes the folder and those above it that are missing. True as well if there is one already, or
/// a link to one.
bool make_dir(std::string const& path);

/// Removes a file, or a link and not what it leads to, or a folder with all that is in it.
bool remove(std::string const& path);

/// Removes a folder with all that is in it, following no link, also not at `path` itself. What
/// can't be removed stays, with the folders that hold it, and the rest goes. Folders can be nested
/// as deep as a process may have files open.
bool remove_dir(std::string const& path);

}  // namespace path
