#include "platform/folder_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

namespace platform {

folder_lock::folder_lock(std::string const& folder)
    : fd_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  if (fd_ < 0) {
    error_ = errno;
    return;
  }
  for (int attempt = 0; ::flock(fd_, LOCK_EX | LOCK_NB) != 0; ++attempt) {
    if (errno == EINTR) continue;
    if (errno != EWOULDBLOCK) return;  // a file system without locks
    if (attempt == 200) {
      error_ = EWOULDBLOCK;
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

folder_lock::~folder_lock() {
  if (fd_ >= 0) ::close(fd_);
}

}  // namespace platform
