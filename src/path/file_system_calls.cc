#include "path/file_system_calls.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace path {

int file_system_calls::ftruncate(int fd, off_t length) {
  return ::ftruncate(fd, length);
}
int file_system_calls::fallocate(int fd, int mode, off_t offset, off_t length) {
  return ::fallocate(fd, mode, offset, length);
}
int file_system_calls::futimens(int fd, timespec const times[2]) {
  return ::futimens(fd, times);
}

int file_system_calls::chmod(char const* path, mode_t mode) {
  return ::chmod(path, mode);
}
int file_system_calls::openat(int folder, char const* name, int flags, mode_t mode) {
  return ::openat(folder, name, flags, mode);
}

file_system_calls& file_system_calls::system() {
  static auto& instance = *new file_system_calls;
  return instance;
}

int file_descriptor::open(std::string const& path, int flags, mode_t mode) {
  close();
  fd_ = uninterrupted([&] { return calls_->open(path.c_str(), flags | O_CLOEXEC, mode); });
  return fd_ < 0 ? errno : 0;
}

int file_descriptor::openat(int folder, std::string const& name, int flags, mode_t mode) {
  close();
  fd_ =
      uninterrupted([&] { return calls_->openat(folder, name.c_str(), flags | O_CLOEXEC, mode); });
  return fd_ < 0 ? errno : 0;
}

int file_descriptor::close() {
  int const fd = std::exchange(fd_, -1);
  if (fd < 0 || calls_->close(fd) == 0) return 0;
  return errno == EINTR ? 0 : errno;  // an interrupted close has closed the file all the same
}

}  // namespace path
