// Preloaded into a program. With SHORT_WRITES each write takes at most so many bytes. When the file
// MEANWHILE has been read its entry is removed, or replaced by MEANWHILE.other if there is that, as
// by another program.
//
// With ACTOR another program does that to ACTOR_FILE before the call of number ACTOR_AT, counted
// from when ACTOR_READ has been read; as the user of number ACTOR_USER if that is set. The calls
// that were counted are written to ACTOR_LOG, each with its name and the path of its file.
#include <dlfcn.h>
#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

template <typename Function>
Function* next(char const* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

char const* setting(char const* name) {
  char const* const value = std::getenv(name);
  return value ? value : "";
}

int descriptor_read = -1;
bool has_been_read = false;
bool is_acting = false;

void overwrite(std::string const& path, char const* bytes, int flags) {
  int const fd = open(path.c_str(), O_WRONLY | flags, 0644);
  if (write(fd, bytes, std::strlen(bytes)) < 0) _exit(1);
  close(fd);
}

void act(std::string const& what, std::string const& file) {
  std::string const victim = setting("ACTOR_VICTIM");
  std::string const folder = file.substr(0, file.rfind('/'));
  struct stat info;
  bool failed = false;
  if (what == "create") overwrite(file, "from another program\n", O_CREAT | O_EXCL);
  if (what == "append") overwrite(file, "appended by another\n", O_APPEND);
  if (what == "cut") failed = stat(file.c_str(), &info) || truncate(file.c_str(), info.st_size / 2);
  if (what == "replace") {
    overwrite(file + ".theirs", "from another program\n", O_CREAT);
    failed = std::rename((file + ".theirs").c_str(), file.c_str()) != 0;
  }
  if (what == "rename") failed = std::rename(file.c_str(), (file + ".moved").c_str()) != 0;
  if (what == "delete") failed = unlink(file.c_str()) != 0;
  if (what == "link") failed = unlink(file.c_str()) || symlink(victim.c_str(), file.c_str());
  if (what == "chmod") failed = chmod(file.c_str(), 0604) != 0;
  if (what == "folder")
    failed = std::rename(folder.c_str(), (folder + ".moved").c_str()) ||
             symlink(victim.substr(0, victim.rfind('/')).c_str(), folder.c_str());
  if (failed) _exit(1);
}

/// In a process of its own, and before the call goes on.
void let_other_act() {
  pid_t const other = fork();
  if (other == 0) {
    if (auto const user = static_cast<uid_t>(std::atoi(setting("ACTOR_USER"))))
      if (setgroups(0, nullptr) || setgid(user) || setuid(user)) _exit(1);
    act(setting("ACTOR"), setting("ACTOR_FILE"));
    _exit(0);
  }
  waitpid(other, nullptr, 0);
}

std::string path_of(int fd, char const* name) {
  if (name && (fd == AT_FDCWD || *name == '/')) return name;
  char path[PATH_MAX] = "";
  std::string const held = "/proc/self/fd/" + std::to_string(fd);
  if (readlink(held.c_str(), path, sizeof path - 1) < 0) return "?";
  return std::string(path) + (name ? "/" + std::string(name) : "");
}

/// Before a call that looks at files or changes them.
void before(char const* call, int fd, char const* name) {
  if (!has_been_read || is_acting || !std::getenv("ACTOR")) return;
  int const code = errno;
  is_acting = true;
  static int count = 0;
  if (char const* const log = std::getenv("ACTOR_LOG")) {
    static int const to = open(log, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    dprintf(to, "%s %s\n", call, path_of(fd, name).c_str());
  }
  if (++count == std::atoi(setting("ACTOR_AT"))) let_other_act();
  is_acting = false;
  errno = code;
}

}  // namespace

extern "C" ssize_t write(int fd, void const* bytes, size_t size) {
  before("write", fd, nullptr);
  static auto* const real = next<ssize_t(int, void const*, size_t)>("write");
  static char const* const most = std::getenv("SHORT_WRITES");
  return real(fd, bytes, most ? std::min<size_t>(size, std::strtoul(most, nullptr, 10)) : size);
}

extern "C" int open(char const* path, int flags, ...) {
  before("open", AT_FDCWD, path);
  static auto* const real = next<int(char const*, int, mode_t)>("open");
  __builtin_va_list rest;
  __builtin_va_start(rest, flags);
  mode_t const mode = flags & O_CREAT ? __builtin_va_arg(rest, mode_t) : 0;
  __builtin_va_end(rest);
  int const fd = real(path, flags, mode);
  for (char const* name : {"MEANWHILE", "ACTOR_READ"})
    if (path == std::string(setting(name)) && (flags & O_ACCMODE) == O_RDONLY && !has_been_read)
      descriptor_read = fd;
  return fd;
}

extern "C" int openat(int folder, char const* name, int flags, ...) {
  before("openat", folder, name);
  static auto* const real = next<int(int, char const*, int, mode_t)>("openat");
  __builtin_va_list rest;
  __builtin_va_start(rest, flags);
  mode_t const mode = flags & O_CREAT ? __builtin_va_arg(rest, mode_t) : 0;
  __builtin_va_end(rest);
  return real(folder, name, flags, mode);
}

extern "C" int close(int fd) {
  before("close", fd, nullptr);
  static auto* const real = next<int(int)>("close");
  int const result = real(fd);
  if (fd != descriptor_read || fd < 0) return result;
  descriptor_read = -1;
  has_been_read = true;
  std::string const file = setting("MEANWHILE");
  if (file.empty()) return result;
  if (std::rename((file + ".other").c_str(), file.c_str()) != 0) unlink(file.c_str());
  return result;
}

// Calls that are only counted: their kind of result, parameters, arguments, descriptor and name.
#define COUNTED(name, parameters, arguments, fd, path)     \
  extern "C" int name parameters {                         \
    before(#name, fd, path);                               \
    static auto* const real = next<int parameters>(#name); \
    return real arguments;                                 \
  }
// NOLINTBEGIN: the headers' own parameter names are of no use here
COUNTED(fstat, (int fd, struct stat* s), (fd, s), fd, nullptr)
COUNTED(stat, (char const* p, struct stat* s), (p, s), AT_FDCWD, p)
COUNTED(lstat, (char const* p, struct stat* s), (p, s), AT_FDCWD, p)
COUNTED(fstatat, (int d, char const* p, struct stat* s, int f), (d, p, s, f), d, p)
COUNTED(ftruncate, (int fd, off_t n), (fd, n), fd, nullptr)
COUNTED(fallocate, (int fd, int m, off_t o, off_t n), (fd, m, o, n), fd, nullptr)
COUNTED(fsync, (int fd), (fd), fd, nullptr)
COUNTED(chmod, (char const* p, mode_t m), (p, m), AT_FDCWD, p)
COUNTED(fchmod, (int fd, mode_t m), (fd, m), fd, nullptr)
COUNTED(fchown, (int fd, uid_t u, gid_t g), (fd, u, g), fd, nullptr)
COUNTED(rename, (char const* a, char const* b), (a, b), AT_FDCWD, b)
COUNTED(renameat2, (int d, char const* a, int e, char const* b, unsigned f), (d, a, e, b, f), e, b)
COUNTED(unlink, (char const* p), (p), AT_FDCWD, p)
COUNTED(unlinkat, (int d, char const* p, int f), (d, p, f), d, p)
// NOLINTEND
