#pragma once

#include <algorithm>
#include <cerrno>
#include <string>

#include "path/file_system_calls.h"

/// The system calls by which files are written, each of them announced to `before` first, which
/// may let it fail.
class watched_calls : public path::file_system_calls {
 public:
  int open(char const* path, int flags, mode_t mode) override {
    return before("open") ? file_system_calls::open(path, flags, mode) : -1;
  }
  ssize_t write(int fd, void const* buffer, std::size_t count) override {
    return before("write") ? file_system_calls::write(fd, buffer, count) : -1;
  }
  int fstat(int fd, struct stat* info) override {
    return before("fstat") ? file_system_calls::fstat(fd, info) : -1;
  }
  int fchmod(int fd, mode_t mode) override {
    return before("fchmod") ? file_system_calls::fchmod(fd, mode) : -1;
  }
  int fsync(int fd) override { return before("fsync") ? file_system_calls::fsync(fd) : -1; }
  int close(int fd) override {
    int const result = file_system_calls::close(fd);
    return before("close") ? result : -1;
  }
  int rename(char const* from, char const* to) override {
    return before("rename") ? file_system_calls::rename(from, to) : -1;
  }
  int openat(int folder, char const* name, int flags, mode_t mode) override {
    return before("openat") ? file_system_calls::openat(folder, name, flags, mode) : -1;
  }
  int unlinkat(int folder, char const* name) override {
    return before("unlinkat") ? file_system_calls::unlinkat(folder, name) : -1;
  }
  int renameat2(int folder, char const* from, char const* to, unsigned flags) override {
    return before("rename") ? file_system_calls::renameat2(folder, from, to, flags) : -1;
  }
  int chmod(char const* path, mode_t mode) override {
    return before("chmod") ? file_system_calls::chmod(path, mode) : -1;
  }
  int ftruncate(int fd, off_t length) override {
    return before("ftruncate") ? file_system_calls::ftruncate(fd, length) : -1;
  }
  int fallocate(int fd, int mode, off_t offset, off_t length) override {
    return before("fallocate") ? file_system_calls::fallocate(fd, mode, offset, length) : -1;
  }
  int fchown(int fd, uid_t owner, gid_t group) override {
    return before("fchown") ? file_system_calls::fchown(fd, owner, group) : -1;
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
