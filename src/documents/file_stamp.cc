#include "documents/file_stamp.h"

#include <ctime>

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

std::string description(file_date date) {
  std::int64_t const nanoseconds = 1'000'000'000;
  std::time_t const seconds = date / nanoseconds - (date % nanoseconds < 0);
  std::tm parts;
  char text[64] = "";
  if (gmtime_r(&seconds, &parts))
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S +0000", &parts);
  return text;
}

}  // namespace documents
