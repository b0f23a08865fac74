#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <optional>
#include <utility>

namespace platform {

/// An open file that is closed with its owner.
class descriptor {
 public:
  descriptor() = default;
  explicit descriptor(int number) : number_(number) {}
  descriptor(descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  descriptor& operator=(descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~descriptor() { close(); }

  int get() const { return number_; }  ///< -1 when there is none
  bool is_open() const { return number_ >= 0; }
  void close() {
    if (number_ >= 0) ::close(std::exchange(number_, -1));
  }
  /// Reading and writing fail with EAGAIN rather than wait.
  void never_wait() const { fcntl(number_, F_SETFL, O_NONBLOCK); }

 private:
  int number_ = -1;
};

struct pipe_ends {
  descriptor read, write;
};

/// Neither end goes on to programs that are started. Nothing, with errno, when there is none.
inline std::optional<pipe_ends> make_pipe() {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return std::nullopt;
  return pipe_ends{descriptor(ends[0]), descriptor(ends[1])};
}

}  // namespace platform
