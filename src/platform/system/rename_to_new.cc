#include "platform/system/rename_to_new.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>

#include <cerrno>

namespace platform {

bool is_unsupported_rename(int code) {
  return code == EINVAL || code == ENOSYS || code == EOPNOTSUPP || code == EPERM;
}

int rename_to_new(int folder, char const* from, char const* to, file_calls& calls) {
  if (calls.renameat2(folder, from, to, RENAME_NOREPLACE) == 0) return 0;
  if (!is_unsupported_rename(errno)) return errno;
  // A link fails in the same way if there is such a name.
  if (calls.linkat(folder, from, to) == 0) {
    calls.unlinkat(folder, from);  // whatever becomes of that, the file has its new name
    return 0;
  }
  if (errno == EEXIST) return EEXIST;
  struct stat info;
  if (fstatat(folder, to, &info, AT_SYMLINK_NOFOLLOW) == 0) return EEXIST;
  return calls.renameat2(folder, from, to, 0) == 0 ? 0 : errno;
}

}  // namespace platform
