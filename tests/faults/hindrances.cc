// Preloaded into a program. With SHORT_WRITES each write takes at most so many bytes. When the file
// MEANWHILE has been read its entry is removed, or replaced by MEANWHILE.other if there is that, as
// by another program.
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

template <typename Function>
Function* next(char const* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

int descriptor_read = -1;

}  // namespace

extern "C" ssize_t write(int fd, void const* bytes, size_t size) {
  static auto* const real = next<ssize_t(int, void const*, size_t)>("write");
  static char const* const most = std::getenv("SHORT_WRITES");
  return real(fd, bytes, most ? std::min<size_t>(size, std::strtoul(most, nullptr, 10)) : size);
}

extern "C" int open(char const* path, int flags, ...) {
  static auto* const real = next<int(char const*, int, mode_t)>("open");
  __builtin_va_list rest;
  __builtin_va_start(rest, flags);
  mode_t const mode = flags & O_CREAT ? __builtin_va_arg(rest, mode_t) : 0;
  __builtin_va_end(rest);
  int const fd = real(path, flags, mode);
  char const* const file = std::getenv("MEANWHILE");
  if (file && path == std::string(file) && (flags & O_ACCMODE) == O_RDONLY) descriptor_read = fd;
  return fd;
}

extern "C" int close(int fd) {
  static auto* const real = next<int(int)>("close");
  int const result = real(fd);
  if (fd != descriptor_read || fd < 0) return result;
  descriptor_read = -1;
  std::string const file = std::getenv("MEANWHILE");
  unsetenv("MEANWHILE");  // once
  if (std::rename((file + ".other").c_str(), file.c_str()) != 0) unlink(file.c_str());
  return result;
}
