#include "documents/file_stamp.h"

#include "path/extended_attributes.h"

namespace documents {

file_stamp stamp_of(std::string const& path, path::file_version const& target) {
  struct stat entry;
  bool const is_link = lstat(path.c_str(), &entry) == 0 && S_ISLNK(entry.st_mode);
  return {is_link ? path::nanoseconds(entry.st_mtim) : target.modified, target};
}

std::optional<file_stamp> stamp_of(std::string const& path) {
  struct stat target;
  if (stat(path.c_str(), &target) != 0) return std::nullopt;
  return stamp_of(path, path::version_of(target));
}

std::optional<struct stat> attributes_of(std::string const& path,
                                         path::file_version const& target) {
  struct stat info;
  if (stat(path.c_str(), &info) != 0 || info.st_dev != target.device || info.st_ino != target.inode)
    return std::nullopt;
  info.st_mode = path::mode_without_access_list(path, info.st_mode);
  return info;
}

}  // namespace documents
