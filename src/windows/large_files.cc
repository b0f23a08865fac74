#include "windows/large_files.h"

#include "documents/file_text.h"
#include "path/file_system.h"
#include "platform/desktop.h"

#include <sys/stat.h>

#include <cstdint>
#include <cstdio>

namespace windows {
namespace {

constexpr std::int64_t large_file = 0xA00000;  // bytes; one more and the user is asked

}  // namespace

bool confirm_large_file(std::string const& path) {
  struct stat info;
  if (::stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode) || info.st_size <= large_file)
    return true;
  if (static_cast<std::uint64_t>(info.st_size) > documents::largest_file) return true;  // refused
  char size[32];
  std::snprintf(size, sizeof size, "%.1f", static_cast<double>(info.st_size) / 1048576);
  platform::alert const question{"Opening Large File",
                                 "The file \u201c" + path::abbreviate_with_tilde(path) +
                                     "\u201d has a size of " + size +
                                     " MB. Are you sure you want to load this as a text file?",
                                 {"Open File", "Cancel"},
                                 1};
  return platform::desktop::current().alerts().run(question) == 0;
}

}  // namespace windows
