#include "documents/folder_in_tmp.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <random>
#include <string_view>

#include "path/entries.h"
#include "path/file_system_calls.h"

namespace documents {
namespace {

/// Where only the owner of a folder can rename it; TMPDIR says so of a folder of this user's own,
/// or of one like /tmp.
std::string base() {
  char const* const named = std::getenv("TMPDIR");
  struct stat info;
  if (named == nullptr || *named != '/' || stat(named, &info) != 0) return "/tmp";
  bool const only_we_write = info.st_uid == geteuid() && (info.st_mode & 022) == 0;
  return only_we_write || (info.st_mode & S_ISVTX) != 0 ? named : "/tmp";
}

std::string own_name() {
  return "Quirnote-" + std::to_string(geteuid());
}

/// Looked at through a descriptor, since what has the name may be another thing the next moment.
bool is_our_folder(std::string const& path) {
  path::file_descriptor folder(path::file_system_calls::system());
  struct stat info;
  errno = folder.open(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
  if (errno != 0 || fstat(folder.get(), &info) != 0) return false;
  errno = EPERM;
  if (info.st_uid != geteuid()) return false;
  return (info.st_mode & 07777) == 0700 || fchmod(folder.get(), 0700) == 0;
}

bool make(std::string const& path) {
  return (mkdir(path.c_str(), 0700) == 0 || errno == EEXIST) && is_our_folder(path);
}

}  // namespace

std::string make_folder_in_tmp() {
  std::string const folder = base() + "/" + own_name();
  if (make(folder)) return folder;
  auto const others = folders_in_tmp();
  if (!others.empty()) return others.front();
  std::random_device random;
  std::string const other = folder + "-" + std::to_string(random()) + std::to_string(random());
  return make(other) ? other : "";
}

std::vector<std::string> folders_in_tmp() {
  std::vector<std::string> result;
  std::string const name = own_name(), in = base();
  for (dirent const* entry : path::entries(in)) {
    std::string_view const found = entry->d_name;
    if (found != name && !found.starts_with(name + "-")) continue;
    std::string const folder = in + "/" + std::string(found);
    if (is_our_folder(folder)) result.push_back(folder);
  }
  return result;
}

}  // namespace documents
