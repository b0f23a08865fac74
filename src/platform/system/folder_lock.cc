#include "platform/system/folder_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <random>
#include <thread>
#include <utility>

namespace platform {
namespace {

constexpr std::chrono::seconds patience(1), most_patience(10);

/// Of the folder's entries, in nanoseconds.
std::int64_t last_change(int folder) {
  struct stat info;
  if (::fstat(folder, &info) != 0) return 0;
  return std::int64_t{info.st_mtim.tv_sec} * 1'000'000'000 + info.st_mtim.tv_nsec;
}

}  // namespace

folder_lock::folder_lock(std::string const& folder)
    : fd_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  if (fd_ < 0) {
    error_ = errno;
    return;
  }
  using clock = std::chrono::steady_clock;
  auto const begin = clock::now();
  auto moved = begin;
  std::int64_t seen = last_change(fd_);
  std::minstd_rand random(static_cast<unsigned>(::getpid()));
  while (::flock(fd_, LOCK_EX | LOCK_NB) != 0) {
    if (errno == EINTR) continue;
    if (errno != EWOULDBLOCK) return;  // a file system without locks
    auto const now = clock::now();
    if (auto const change = last_change(fd_); std::exchange(seen, change) != change) moved = now;
    if (now - moved > patience || now - begin > most_patience) {
      error_ = EWOULDBLOCK;
      return;
    }
    // Those that wait in step would get in each other's way again and again.
    std::this_thread::sleep_for(std::chrono::microseconds(1000 + random() % 8000));
  }
}

folder_lock::~folder_lock() {
  if (fd_ >= 0) ::close(fd_);
}

}  // namespace platform
