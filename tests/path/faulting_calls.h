#pragma once

#include <algorithm>
#include <cerrno>
#include <string>

#include "path/file_system_calls.h"

/// The system calls by which files are written, each of them announced to `before` first, which
/// may let it fail.
class watched_calls : public path::file_system_calls {
  using base = path::file_system_calls;

 public:
  int open(char const* path, int flags, mode_t mode) override {
    return before("open") ? base::open(path, flags, mode) : -1;
  }
  ssize_t write(int fd, void const* bytes, std::size_t count) override {
    return before("write") ? base::write(fd, bytes, count) : -1;
  }
  int fstat(int fd, struct stat* s) override { return before("fstat") ? base::fstat(fd, s) : -1; }
  int fchmod(int fd, mode_t m) override { return before("fchmod") ? base::fchmod(fd, m) : -1; }
  int fsync(int fd) override { return before("fsync") ? base::fsync(fd) : -1; }
  int close(int fd) override {
    int const result = base::close(fd);
    return before("close") ? result : -1;
  }
  int rename(char const* from, char const* to) override {
    return before("rename") ? base::rename(from, to) : -1;
  }
  int openat(int folder, char const* name, int flags, mode_t mode) override {
    return before("openat") ? base::openat(folder, name, flags, mode) : -1;
  }
  int unlinkat(int at, char const* name) override {
    return before("unlinkat") ? base::unlinkat(at, name) : -1;
  }
  int renameat2(int at, char const* from, char const* to, unsigned flags) override {
    return before("rename") ? base::renameat2(at, from, to, flags) : -1;
  }
  int chmod(char const* p, mode_t m) override { return before("chmod") ? base::chmod(p, m) : -1; }
  int ftruncate(int fd, off_t n) override {
    return before("ftruncate") ? base::ftruncate(fd, n) : -1;
  }
  int fallocate(int fd, int mode, off_t at, off_t n) override {
    return before("fallocate") ? base::fallocate(fd, mode, at, n) : -1;
  }
  int fchown(int fd, uid_t u, gid_t g) override {
    return before("fchown") ? base::fchown(fd, u, g) : -1;
  }

 protected:
  /// False, with errno set, to let the call fail.
  virtual bool before(char const* call) = 0;
};

/// Lets one call fail: the nth of all, or each one of a name.
class faulting_calls : public watched_calls {
 public:
  faulting_calls(int nth, int code) : nth_(nth), code_(code) {}
  faulting_calls(std::string name, int code) : name_(std::move(name)), code_(code) {}
  bool has_failed() const { return !failed_call_.empty(); }
  std::string const& failed_call() const { return failed_call_; }

 protected:
  bool before(char const* call) override {
    if (++count_ != nth_ && call != name_) return true;
    failed_call_ = call;
    errno = code_;
    return false;
  }

 private:
  int nth_ = -1;
  std::string name_;
  int code_;
  int count_ = 0;
  std::string failed_call_;
};

/// Interrupts every other call, and writes three bytes at a time.
class stuttering_calls : public watched_calls {
 public:
  ssize_t write(int fd, void const* buffer, std::size_t count) override {
    return watched_calls::write(fd, buffer, std::min<std::size_t>(count, 3));
  }

 protected:
  bool before(char const* call) override {
    // Neither of these is interrupted before it has done its work.
    if (std::string(call) == "fstat" || std::string(call) == "rename") return true;
    errno = EINTR;
    return interrupted_ = !interrupted_;
  }

 private:
  bool interrupted_ = false;
};
