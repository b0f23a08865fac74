#include "server/pid_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <string_view>

namespace server {
namespace {

std::string command_name(std::string const& process) {
  platform::descriptor const file(
      ::open(("/proc/" + process + "/comm").c_str(), O_RDONLY | O_CLOEXEC));
  char name[64];
  ssize_t const size = ::read(file.get(), name, sizeof name);
  return size > 0 ? std::string(name, static_cast<std::size_t>(size)) : "";
}

}  // namespace

bool runs_this_program(pid_t process) {
  std::string const name = command_name(std::to_string(process));
  return process > 0 && !name.empty() && name == command_name("self");
}

pid_file::state pid_file::claim() {
  while (true) {
    file_ = platform::descriptor(
        ::open(path_.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file_.is_open()) {
      error_ = errno;
      return state::unusable;
    }
    bool const locked = ::flock(file_.get(), LOCK_EX | LOCK_NB) == 0;
    error_ = locked ? 0 : errno;
    if (!locked && error_ == EINTR) continue;
    other_ = read_id();
    // Where there are no locks, the name has to do.
    bool const is_others = locked ? false
                           : error_ == EWOULDBLOCK
                               ? true
                               : other_ != ::getpid() && runs_this_program(other_);
    if (is_others) {
      file_.close();
      return state::others;
    }
    // Who had it may have removed it between our two steps.
    if (!is_at_path()) continue;
    if (write_own_id()) return state::ours;
    error_ = errno;
    file_.close();
    return state::unusable;
  }
}

bool pid_file::is_at_path() const {
  struct stat own, there;
  return ::fstat(file_.get(), &own) == 0 && ::lstat(path_.c_str(), &there) == 0 &&
         own.st_ino == there.st_ino && own.st_dev == there.st_dev;
}

bool pid_file::write_own_id() {
  std::string const id = std::to_string(::getpid());
  return ::ftruncate(file_.get(), 0) == 0 &&
         ::pwrite(file_.get(), id.data(), id.size(), 0) == static_cast<ssize_t>(id.size());
}

pid_t pid_file::read_id() const {
  char text[32];
  ssize_t const size = ::pread(file_.get(), text, sizeof text, 0);
  pid_t id = 0;
  if (size > 0) std::from_chars(text, text + size, id);
  return id > 0 ? id : 0;
}

void pid_file::remove() {
  if (file_.is_open() && is_at_path()) ::unlink(path_.c_str());
  file_.close();
}

}  // namespace server
