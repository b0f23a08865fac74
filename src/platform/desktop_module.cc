#include "platform/desktop_module.h"

#include <dlfcn.h>

#include "platform/system/library_folders.h"

namespace platform {

desktop_module* load_desktop_module(std::string& error) {
  static desktop_module* module = nullptr;
  if (module != nullptr) return module;

  std::string const path = module_folder() + "/desktop.so";
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
