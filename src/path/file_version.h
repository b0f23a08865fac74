#pragma once

#include <sys/stat.h>

#include <cstdint>

namespace path {

/// What stands in a file at some time. Where two are equal it is the same file and no one has
/// written to it in between, as far as its size and its date show that.
struct file_version {
  dev_t device = 0;
  ino_t inode = 0;
  std::uint64_t size = 0;     ///< in bytes
  std::int64_t modified = 0;  ///< in nanoseconds since 1970-01-01 00:00:00 UTC

  friend bool operator==(file_version const&, file_version const&) = default;
};

inline std::int64_t nanoseconds(timespec const& time) {
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

inline file_version version_of(struct stat const& info) {
  return {info.st_dev, info.st_ino, static_cast<std::uint64_t>(info.st_size),
          nanoseconds(info.st_mtim)};
}

inline bool is_same_file(struct stat const& a, struct stat const& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

}  // namespace path
