#include "path/neighbour.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#include <random>
#include <string_view>

#include "path/entries.h"

namespace path {
namespace {

constexpr std::time_t age_of_left_over = 60;  // seconds, longer than it takes to hold a new file

/// Short enough for any file system, with the number after it.
std::string prefix_of(std::string const& name) {
  return "." + name.substr(0, 200) + ".quirnote-";
}

bool is_number(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == text.npos;
}

bool is_left_over(int folder, char const* name, file_system_calls& calls) {
  file_descriptor file(calls);
  if (file.openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY) != 0) return false;
  struct stat info;
  return fstat(file.get(), &info) == 0 && S_ISREG(info.st_mode) && info.st_nlink == 1 &&
         info.st_uid == geteuid() && info.st_mtime < std::time(nullptr) - age_of_left_over &&
         flock(file.get(), LOCK_EX | LOCK_NB) == 0;
}

}  // namespace

std::string neighbour_of(std::string const& name) {
  static std::minstd_rand random(std::random_device{}());
  return prefix_of(name) + std::to_string(random());
}

// Where files can't be locked their age must do.
void hold_neighbour(int descriptor) {
  flock(descriptor, LOCK_EX | LOCK_NB);
}

void remove_left_over_neighbours(open_place const& target, file_system_calls& calls) {
  std::string const prefix = prefix_of(target.name());
  for (dirent const* entry : entries(target.folder())) {
    std::string_view const name = entry->d_name;
    if (!name.starts_with(prefix) || !is_number(name.substr(prefix.size()))) continue;
    if (is_left_over(target.folder(), entry->d_name, calls))
      calls.unlinkat(target.folder(), entry->d_name);
  }
}

}  // namespace path
