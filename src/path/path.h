#pragma once

#include <string>
#include <string_view>

/// Operations on paths as strings; no file system is asked. Paths are byte strings, mostly UTF-8,
/// with "/" as separator. Any thread.
///
///     path::join("/home/me", "notes/../todo.txt")  // "/home/me/todo.txt"
namespace path {

/// Takes out "./", "//", a final "/" or "/." and what ".." goes back over. Excess ".." stay, also
/// at the root: "/../a" is left as it is. "/" stays, "/." and "a/.." are "".
std::string normalize(std::string path);

/// `name` alone if it begins with "/", else `name` in the folder `dir`; normalized.
std::string join(std::string_view dir, std::string_view name);

/// The folder of `path`. That of a bare name is "", and "/" and "" are their own.
std::string parent(std::string const& path);

/// What follows the last "/" of the normalized path.
std::string name(std::string const& path);

/// The URL of an absolute path.
std::string file_url(std::string_view path);

/// The last step of `normalize`: takes out each ".." together with the component before it.
void remove_parent_dir(std::string& path);

}  // namespace path
