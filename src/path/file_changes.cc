#include "path/file_changes.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string_view>

#include "path/entries.h"
#include "path/path.h"
#include "platform/system/library_folders.h"

namespace path {
namespace {

constexpr std::string_view unique_part = ".XXXXXX";

bool is_folder(int parent, dirent const& entry) {
  if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
  struct stat info;
  return fstatat(parent, entry.d_name, &info, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(info.st_mode);
}

/// By descriptors: whoever puts a link in the place of a folder meanwhile has nothing removed that
/// the link leads to.
bool remove_folder(int parent, char const* name) {
  int const folder = openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (folder < 0) return false;
  bool all_gone = true;
  for (dirent const* entry : entries(folder))
    all_gone &= is_folder(folder, *entry) ? remove_folder(folder, entry->d_name)
                                          : unlinkat(folder, entry->d_name, 0) == 0;
  close(folder);
  return all_gone && unlinkat(parent, name, AT_REMOVEDIR) == 0;
}

}  // namespace

std::string temp(std::string const& name) {
  char const* const set = getenv("TMPDIR");
  std::string const folder = set && *set ? set : "/tmp";
  if (name.empty()) return folder;
  std::size_t const found = name.rfind(unique_part);
  std::size_t const suffix = found == name.npos ? 0 : name.size() - found - unique_part.size();
  std::string path = join(folder, found == name.npos ? name + std::string(unique_part) : name);
  int const fd = mkostemps(path.data(), static_cast<int>(suffix), O_CLOEXEC);
  if (fd < 0) return "";
  close(fd);
  return path;
}

bool make_dir(std::string const& path) {
  std::string const folder = normalize(path);
  if (folder.empty()) return false;
  return platform::make_folders(folder.starts_with('/') ? folder : "./" + folder, 0777);
}

bool remove(std::string const& path) {
  struct stat info;
  if (path.empty() || lstat(path.c_str(), &info) != 0) return false;
  return S_ISDIR(info.st_mode) ? remove_dir(path) : unlink(path.c_str()) == 0;
}

bool remove_dir(std::string const& path) {
  std::string const folder = normalize(path);  // a link with a "/" after it would be followed
  return !folder.empty() && folder != "/" && remove_folder(AT_FDCWD, folder.c_str());
}

}  // namespace path
