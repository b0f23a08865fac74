#include "platform/desktop_module.h"

#include <dlfcn.h>
#include <unistd.h>

#include <climits>

namespace platform {
namespace {

// The folder of the running program, with a trailing slash.
std::string program_folder() {
  char path[PATH_MAX];
  ssize_t const length = readlink("/proc/self/exe", path, sizeof path);
  if (length <= 0) return "./";
  std::string const whole(path, static_cast<std::size_t>(length));
  return whole.substr(0, whole.rfind('/') + 1);
}

}  // namespace

desktop_module* load_desktop_module(std::string& error) {
  static desktop_module* module = nullptr;
  if (module != nullptr) return module;

  std::string const path = program_folder() + "../lib/quirnote/desktop.so";
  void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  void* const entry = library != nullptr ? dlsym(library, desktop_module_symbol) : nullptr;
  if (entry == nullptr) {
    error = dlerror();
    return nullptr;
  }
  module = reinterpret_cast<desktop_module* (*)()>(entry)();
  return module;
}

}  // namespace platform
