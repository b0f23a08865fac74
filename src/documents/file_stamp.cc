#include "documents/file_stamp.h"

#include <ctime>

namespace documents {
namespace {

file_date date_of(timespec const& time) {
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

}  // namespace

std::optional<file_stamp> stamp_of(std::string const& path) {
  struct stat entry, target;
  if (lstat(path.c_str(), &entry) != 0 || stat(path.c_str(), &target) != 0) return std::nullopt;
  return file_stamp{date_of(entry.st_mtim), date_of(target.st_mtim),
                    static_cast<std::uint64_t>(target.st_size)};
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
