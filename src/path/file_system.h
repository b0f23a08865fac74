#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "path/file_error.h"

/// Questions to the file system. Paths are byte strings. Any thread.
namespace path {

/// False for "" and for a link that leads nowhere.
bool exists(std::string const& path);

/// The device that the file is on, or -1.
dev_t device(std::string const& path);

/// The home folder by the password database, "" if the user isn't in it.
std::string home();

/// The working directory, "" on failure.
std::string cwd();

/// The normalized path with the links in every component followed. A path that isn't absolute is
/// only normalized. A link that leads nowhere gives the path of what it names, and links in a
/// circle end at one of them. "" if a link can't be read, which is reported on standard error.
std::string resolve(std::string const& path);

/// The same, but only a link in the last component is followed.
std::string resolve_head(std::string const& path);

/// The one form in which the program names a file: absolute, "~" at the front replaced by the home
/// folder, without ".", ".." and idle "/". Links stay, but ".." after one leads where the system
/// would go. A path in a working directory that has been deleted stays relative: it names nothing.
std::string standardize(std::string const& path);

/// The path with "~" for the home folder, for messages.
std::string abbreviate_with_tilde(std::string const& path);

/// In bytes; a document can be larger.
constexpr std::size_t largest_content = std::size_t{512} << 20;

/// Appends what the file holds to `bytes`; also what came before an error. A file that holds more
/// than `largest_content` is refused: EFBIG.
std::optional<file_error> read_content(std::string const& path, std::string& bytes);

/// What the file holds; "" if it can't be read or is no regular file.
std::string content(std::string const& path);

}  // namespace path
