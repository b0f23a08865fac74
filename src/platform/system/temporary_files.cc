#include "platform/system/temporary_files.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#include <random>
#include <string_view>
#include <vector>

namespace platform {
namespace {

constexpr std::time_t age_of_left_over = 60;  // seconds, longer than it takes to hold a new file

/// Short enough for any file system, with the number after it.
std::string prefix_of(std::string const& name) {
  return "." + name.substr(0, 200) + ".quirnote-";
}

bool is_number(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == text.npos;
}

std::vector<std::string> temporaries_of(std::string const& name, int folder) {
  std::vector<std::string> result;
  int const own = openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  DIR* const entries = own < 0 ? nullptr : fdopendir(own);
  if (entries == nullptr) {
    if (own >= 0) close(own);
    return result;
  }
  std::string const prefix = prefix_of(name);
  while (dirent const* entry = readdir(entries)) {
    std::string_view const found = entry->d_name;
    if (found.starts_with(prefix) && is_number(found.substr(prefix.size())))
      result.emplace_back(found);
  }
  closedir(entries);
  return result;
}

}  // namespace

std::string temporary_name(std::string const& name) {
  static std::minstd_rand random(std::random_device{}());
  return prefix_of(name) + std::to_string(random());
}

// Where files can't be locked their age must do.
void hold_temporary(int descriptor) {
  flock(descriptor, LOCK_EX | LOCK_NB);
}

bool is_left_over(int descriptor) {
  struct stat info;
  return fstat(descriptor, &info) == 0 && S_ISREG(info.st_mode) && info.st_nlink == 1 &&
         info.st_uid == geteuid() && info.st_mtime < std::time(nullptr) - age_of_left_over &&
         flock(descriptor, LOCK_EX | LOCK_NB) == 0;
}

void remove_left_over_temporaries(int folder, std::string const& name, file_calls& calls) {
  for (std::string const& found : temporaries_of(name, folder)) {
    constexpr int how = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    int const file = openat(folder, found.c_str(), how);
    if (file < 0) continue;
    if (is_left_over(file)) calls.unlinkat(folder, found.c_str());
    close(file);
  }
}

}  // namespace platform
