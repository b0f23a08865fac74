#include "path/info.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>

#include <algorithm>
#include <iterator>

#include "path/path.h"

namespace path {
namespace {

std::uint32_t flag_of_type(mode_t mode) {
  switch (mode & S_IFMT) {
    case S_IFREG:
      return flag::file_bsd;
    case S_IFDIR:
      return flag::directory_bsd;
    case S_IFLNK:
      return flag::symlink_bsd;
    case S_IFIFO:
      return flag::socket_bsd;
    default:
      return 0;
  }
}

/// Whether the kernel makes up the files there.
bool is_made_up(std::string const& folder) {
  constexpr unsigned long types[] = {PROC_SUPER_MAGIC,   SYSFS_MAGIC,         DEVPTS_SUPER_MAGIC,
                                     CGROUP_SUPER_MAGIC, CGROUP2_SUPER_MAGIC, DEBUGFS_MAGIC,
                                     SECURITYFS_MAGIC,   TRACEFS_MAGIC,       BPF_FS_MAGIC,
                                     PSTOREFS_MAGIC,     SELINUX_MAGIC,       EFIVARFS_MAGIC,
                                     BINFMTFS_MAGIC,     0x62656570 /* configfs */};
  struct statfs volume;
  if (statfs(folder.c_str(), &volume) != 0) return false;
  auto const type = static_cast<unsigned long>(volume.f_type) & 0xFFFFFFFF;
  return std::find(std::begin(types), std::end(types), type) != std::end(types);
}

}  // namespace

std::uint32_t info(std::string const& path, std::uint32_t) {
  std::string const last = name(path);
  if (last == ".") return flag::meta_self;
  if (last == "..") return flag::meta_parent;
  std::uint32_t result = last.starts_with('.') ? flag::hidden_dotfile : 0;
  struct statx found;
  int const how = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT;
  if (statx(AT_FDCWD, path.c_str(), how, STATX_TYPE, &found) != 0) return result;
  result |= flag_of_type(found.stx_mode);
  if (!(result & flag::directory_bsd)) return result;
  bool const is_mount_point = found.stx_attributes & STATX_ATTR_MOUNT_ROOT;
  if (normalize(path) == "/dev" || (is_mount_point && is_made_up(path)))
    result |= flag::hidden_volume;
  return result;
}

}  // namespace path
