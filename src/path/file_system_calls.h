#pragma once

#include <cerrno>
#include <string>
#include <utility>

#include "platform/system/replace_file.h"

namespace path {

/// The system calls by which the reader and the writer of files work, in one place, so that tests
/// can let any of them fail. Results and errno are those of the calls of the same name.
class file_system_calls : public platform::file_calls {
 public:
  virtual int ftruncate(int fd, off_t length);
  virtual int fallocate(int fd, int mode, off_t offset, off_t length);
  virtual int futimens(int fd, timespec const times[2]);
  virtual int chmod(char const* path, mode_t mode);
  // Names in an open folder; links aren't followed.
  virtual int openat(int folder, char const* name, int flags, mode_t mode);

  /// The real ones.
  static file_system_calls& system();
};

/// An open file, closed at the end of the scope unless `close` has been called.
class file_descriptor {
 public:
  explicit file_descriptor(file_system_calls& calls) : calls_(&calls) {}
  file_descriptor(file_descriptor&& other) noexcept
      : calls_(other.calls_), fd_(std::exchange(other.fd_, -1)) {}
  file_descriptor& operator=(file_descriptor&& other) noexcept {
    std::swap(calls_, other.calls_);
    std::swap(fd_, other.fd_);
    return *this;
  }
  ~file_descriptor() { close(); }

  /// 0 or an errno. The descriptor isn't inherited by programs that are run.
  int open(std::string const& path, int flags, mode_t mode = 0);
  /// The same for a name in the open `folder`.
  int openat(int folder, std::string const& name, int flags, mode_t mode = 0);
  /// 0 or an errno; the file is closed in any case.
  int close();
  int get() const { return fd_; }

 private:
  file_system_calls* calls_;
  int fd_ = -1;
};

/// Calls again as long as the call was interrupted, but not for ever. Gives its result, with errno
/// as it left it.
template <typename Call>
auto uninterrupted(Call call) {
  for (int attempts = 1;; ++attempts) {
    auto const result = call();
    if (result >= 0 || errno != EINTR || attempts == 1000) return result;
  }
}

}  // namespace path
