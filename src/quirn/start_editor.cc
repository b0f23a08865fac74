#include "quirn/start_editor.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace quirn {
namespace {

std::string program_beside_this() {
  char path[PATH_MAX];
  ssize_t const size = ::readlink("/proc/self/exe", path, sizeof path);
  if (size <= 0) return "quirnote";
  std::string const own(path, static_cast<std::size_t>(size));
  return own.substr(0, own.rfind('/') + 1) + "quirnote";
}

[[noreturn]] void run(std::string const& beside, int messages) {
  ::setsid();
  std::signal(SIGINT, SIG_DFL);
  int const nothing = ::open("/dev/null", O_RDWR | O_CLOEXEC);
  ::dup2(nothing, STDIN_FILENO);
  ::dup2(nothing, STDOUT_FILENO);
  ::dup2(messages >= 0 ? messages : nothing, STDERR_FILENO);
  // Nothing keeps the file system of the working folder busy.
  char const* const home = std::getenv("HOME");
  if (home == nullptr || ::chdir(home) != 0) [[maybe_unused]]
    int const moved = ::chdir("/");
  char name[] = "quirnote";
  char* arguments[] = {name, nullptr};
  ::execv(beside.c_str(), arguments);
  ::execvp(name, arguments);
  ::dprintf(STDERR_FILENO, "quirnote can't be started: %s\n", std::strerror(errno));
  ::_exit(127);
}

}  // namespace

started_editor::started_editor() : messages_(::memfd_create("quirnote-messages", MFD_CLOEXEC)) {
  std::string const beside = program_beside_this();
  process_ = ::fork();
  if (process_ == 0) run(beside, messages_.get());
}

bool started_editor::has_ended() {
  if (process_ < 0) return true;
  if (::waitpid(process_, nullptr, WNOHANG) == 0) return false;
  process_ = -1;
  return true;
}

std::string started_editor::messages() const {
  std::string text(4096, '\0');
  ssize_t const size = ::pread(messages_.get(), text.data(), text.size(), 0);
  text.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
  return text;
}

}  // namespace quirn
