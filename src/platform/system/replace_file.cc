#include "platform/system/replace_file.h"

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/system/rename_to_new.h"
#include "platform/system/temporary_files.h"

namespace platform {

int file_calls::open(char const* path, int flags, mode_t mode) {
  return ::open(path, flags, mode);
}
ssize_t file_calls::read(int fd, void* buffer, std::size_t count) {
  return ::read(fd, buffer, count);
}
ssize_t file_calls::write(int fd, void const* buffer, std::size_t count) {
  return ::write(fd, buffer, count);
}
int file_calls::fstat(int fd, struct stat* info) {
  return ::fstat(fd, info);
}
int file_calls::fchmod(int fd, mode_t mode) {
  return ::fchmod(fd, mode);
}
int file_calls::fchown(int fd, uid_t owner, gid_t group) {
  return ::fchown(fd, owner, group);
}
int file_calls::fsync(int fd) {
  return ::fsync(fd);
}
int file_calls::close(int fd) {
  return ::close(fd);
}
int file_calls::rename(char const* from, char const* to) {
  return ::rename(from, to);
}
int file_calls::unlink(char const* path) {
  return ::unlink(path);
}
int file_calls::linkat(int folder, char const* from, char const* to) {
  return ::linkat(folder, from, folder, to, 0);
}
int file_calls::renameat2(int folder, char const* from, char const* to, unsigned flags) {
  return ::renameat2(folder, from, folder, to, flags);
}
int file_calls::unlinkat(int folder, char const* name) {
  return ::unlinkat(folder, name, 0);
}

file_calls& file_calls::system() {
  static auto& instance = *new file_calls;
  return instance;
}

namespace {

/// What the link at `path` leads to, the path itself if there is none; "" for one that isn't
/// followed. Root may be at work with the settings of a user, who must not say what root
/// overwrites.
std::string target_of_links(std::string const& path) {
  struct stat info;
  if (::lstat(path.c_str(), &info) != 0 || !S_ISLNK(info.st_mode)) return path;
  if (::geteuid() == 0 && info.st_uid != 0) return "";
  char resolved[PATH_MAX];
  return ::realpath(path.c_str(), resolved) ? resolved : path;
}

/// A call that is interrupted more often than this in a row has failed.
constexpr int most_interruptions = 1000;

int write_all(int fd, std::string_view contents, file_calls& calls) {
  int interruptions = 0;
  while (!contents.empty()) {
    ssize_t const written = calls.write(fd, contents.data(), contents.size());
    if (written < 0 && errno == EINTR && ++interruptions < most_interruptions) continue;
    if (written < 0) return errno;
    if (written == 0) return ENOSPC;
    contents.remove_prefix(static_cast<std::size_t>(written));
  }
  return 0;
}

struct rights {
  uid_t owner;
  gid_t group;
  mode_t mode;
};

/// Those of the file at `path`; a new one belongs to whom the folder belongs, since root may be
/// at work in another user's home folder.
rights rights_to_give(std::string const& path) {
  struct stat info;
  if (::stat(path.c_str(), &info) == 0) return {info.st_uid, info.st_gid, info.st_mode & 07777};
  if (::geteuid() == 0 && ::stat(folder_of(path).c_str(), &info) == 0)
    return {info.st_uid, info.st_gid, 0600};
  return {::geteuid(), ::getegid(), 0600};
}

/// Only root may give a file away; one that can't be stays with its writer.
void give_to(int fd, rights const& wanted, file_calls& calls) {
  if (wanted.owner != ::geteuid() || wanted.group != ::getegid())
    calls.fchown(fd, wanted.owner, wanted.group);
}

int write_temporary(std::string const& name, std::string_view contents, rights const& wanted,
                    file_calls& calls) {
  mode_t const mode = wanted.mode;
  int const fd = calls.open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (fd < 0) return errno;
  hold_temporary(fd);
  int error = write_all(fd, contents, calls);
  if (!error) give_to(fd, wanted, calls);
  if (!error && mode != 0600 && calls.fchmod(fd, mode) != 0) error = errno;
  if (!error && calls.fsync(fd) != 0) error = errno;
  if (calls.close(fd) != 0 && !error) error = errno;
  return error;
}

int sync_folder(std::string const& folder, file_calls& calls) {
  int const fd = calls.open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0);
  if (fd < 0) return errno;
  int error = calls.fsync(fd) != 0 ? errno : 0;
  if (error == EINVAL) error = 0;  // file systems that have nothing to sync for folders
  if (calls.close(fd) != 0 && !error) error = errno;
  return error;
}

}  // namespace

std::string folder_of(std::string const& path) {
  auto const slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

std::string name_of(std::string const& path) {
  return path.substr(path.rfind('/') + 1);
}

int read_file(std::string const& path, std::string& contents, file_calls& calls,
              struct stat* info) {
  contents.clear();
  struct stat own;
  if (!info) info = &own;
  // To open a pipe wakes the program at its other end, and to open a device may move something.
  if (::stat(path.c_str(), info) == 0 && !S_ISREG(info->st_mode))
    return S_ISDIR(info->st_mode) ? EISDIR : EINVAL;
  int const fd = calls.open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0);
  if (fd < 0) return errno;
  int error = calls.fstat(fd, info) != 0 ? errno : 0;
  if (!error && !S_ISREG(info->st_mode)) error = S_ISDIR(info->st_mode) ? EISDIR : EINVAL;
  if (!error && static_cast<std::size_t>(info->st_size) > largest_small_file) error = EFBIG;
  char buffer[16384];
  int interruptions = 0;
  while (!error) {
    if (contents.size() > largest_small_file) {
      error = EFBIG;
      break;
    }
    ssize_t const count = calls.read(fd, buffer, sizeof buffer);
    if (count == 0) break;
    if (count > 0)
      contents.append(buffer, static_cast<std::size_t>(count));
    else if (errno != EINTR || ++interruptions == most_interruptions)
      error = errno;
  }
  calls.close(fd);  // nothing was written: its result tells nothing
  return error;
}

int replace_file(std::string const& path, std::string_view contents, file_calls& calls) {
  std::string const target = target_of_links(path);
  if (target.empty()) return EPERM;
  std::string temporary;
  int error = EEXIST;
  for (int attempt = 0; error == EEXIST && attempt < 100; ++attempt) {
    temporary = folder_of(target) + "/" + temporary_name(name_of(target));
    error = write_temporary(temporary, contents, rights_to_give(target), calls);
  }
  if (error == EEXIST) return error;  // not ours to remove
  if (!error && calls.rename(temporary.c_str(), target.c_str()) != 0) error = errno;
  if (error) {
    calls.unlink(temporary.c_str());  // what remains is removed by a later run
    return error;
  }
  return sync_folder(folder_of(target), calls);
}

int set_aside(std::string const& path, std::string& kept, file_calls& calls) {
  int error = EEXIST;
  for (int n = 1; error == EEXIST; ++n) {
    kept = path + ".damaged-" + std::to_string(n);
    error = rename_to_new(AT_FDCWD, path.c_str(), kept.c_str(), calls);
  }
  return error;
}

void remove_left_over_temporaries(std::string const& path, file_calls& calls) {
  std::string const target = target_of_links(path);
  if (target.empty()) return;
  int const folder = ::open(folder_of(target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0) return;
  remove_left_over_temporaries(folder, name_of(target), calls);
  ::close(folder);
}

}  // namespace platform
