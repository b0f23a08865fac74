#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string>

#include "path/file_version.h"

namespace documents {

/// Nanoseconds since 1970-01-01 00:00:00 UTC.
using file_date = std::int64_t;

/// Detects changes of a file by other processes: if the stamps are equal it was not.
struct file_stamp {
  file_date modified = 0;  ///< of the path itself, which may be a link
  path::file_version target;

  /// Without a look at the inode, which some file systems over a network change for no reason. The
  /// size distinguishes two changes within one tick of the file system's clock. Before overwriting
  /// the file, compare `target`.
  friend bool operator==(file_stamp const& a, file_stamp const& b) {
    return a.modified == b.modified && a.target.modified == b.target.modified &&
           a.target.size == b.target.size;
  }
};

/// Nothing if there is no file (or a link that leads nowhere).
std::optional<file_stamp> stamp_of(std::string const& path);
/// That of a file at `path` of which the version is known from its descriptor.
file_stamp stamp_of(std::string const& path, path::file_version const& target);

/// Owner, group and permissions of the file at `path`, as a file that is made instead of it may
/// have them. Nothing if it isn't the same file as that of `target`.
std::optional<struct stat> attributes_of(std::string const& path, path::file_version const& target);

}  // namespace documents
