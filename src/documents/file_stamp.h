#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string>

namespace documents {

/// Nanoseconds since 1970-01-01 00:00:00 UTC.
using file_date = std::int64_t;

/// By what it is seen that a file was changed by somebody else: if the stamps are equal it was not.
struct file_stamp {
  file_date modified = 0;  ///< of the path itself, which may be a link
  file_date target_modified = 0;
  /// Tells two changes within one tick of the file system's clock apart. (The inode would too, but
  /// some file systems over a network change it without a reason.)
  std::uint64_t target_size = 0;

  friend bool operator==(file_stamp const&, file_stamp const&) = default;
};

/// Nothing if there is no file (or a link that leads nowhere).
std::optional<file_stamp> stamp_of(std::string const& path);

/// "2026-11-21 09:30:00 +0000"
std::string description(file_date date);

}  // namespace documents
