#include "path/file_place.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/system/links.h"

namespace path {

file_error open_place::error(char const* operation) const {
  return make_file_error(operation, path_, errno);
}

/// `folder` is looked up in the folder that is open now.
bool open_place::enter(std::string const& folder) {
  constexpr int how = O_PATH | O_DIRECTORY | O_CLOEXEC;
  int const from = folder_.get() < 0 ? AT_FDCWD : folder_.get();
  file_descriptor next(*calls_);
  if (next.openat(from, folder, how) != 0) return false;
  folder_ = std::move(next);
  return true;
}

/// Of the name in the folder that is open.
std::string open_place::real_path() const {
  std::string const held = "/proc/self/fd/" + std::to_string(folder());
  std::string const folder_path = platform::target_of_link(held).value_or("");
  if (folder_path.empty()) return path_;
  return (folder_path == "/" ? "" : folder_path) + "/" + name_;
}

// Links are read here rather than followed by the system, which may be told not to follow what
// others have put in a folder that everybody writes (fs.protected_symlinks).
bool open_place::may_follow() const {
  struct stat at, link;
  if (fstat(folder(), &at) != 0 || fstatat(folder(), name(), &link, AT_SYMLINK_NOFOLLOW) != 0)
    return false;
  constexpr mode_t shared = S_ISVTX | S_IWOTH;
  errno = EACCES;
  return (at.st_mode & shared) != shared || link.st_uid == geteuid() || link.st_uid == at.st_uid;
}

std::optional<file_error> open_place::open(std::string const& path) {
  path_ = path;
  std::string rest = path;
  for (int links = 0; links <= platform::most_links; ++links) {
    if (!enter(platform::folder_of(rest))) return error("open");
    name_ = platform::name_of(rest);
    if (name_.empty()) name_ = ".";
    if (links == 0) place_.entry = real_path();
    auto const target = platform::target_of_link(name_, folder());
    if (!target) {
      place_.target = links == 0 ? place_.entry : real_path();
      return std::nullopt;
    }
    if (!may_follow()) return error("open");
    rest = *target;
  }
  errno = ELOOP;
  return error("open");
}

std::optional<struct stat> open_place::info() const {
  struct stat result;
  if (fstatat(folder(), name(), &result, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
  return result;
}

std::optional<file_error> open_place::sync() const {
  file_descriptor entries(*calls_);
  // A folder may be one that can be written, but not read.
  if (entries.openat(folder(), ".", O_RDONLY | O_DIRECTORY) != 0) return std::nullopt;
  int const result = uninterrupted([&] { return calls_->fsync(entries.get()); });
  if (result != 0 && errno != EINVAL && errno != EROFS) return error("fsync");
  if (int const code = entries.close()) return make_file_error("close", path_, code);
  return std::nullopt;
}

std::optional<file_place> place_of(std::string const& path) {
  open_place place;
  if (place.open(path)) return std::nullopt;
  return place.place();
}

}  // namespace path
