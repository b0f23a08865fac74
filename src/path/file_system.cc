#include "path/file_system.h"

#include <fcntl.h>
#include <limits.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <vector>

#include "path/file_reader.h"
#include "path/path.h"
#include "platform/library_folders.h"

namespace path {
namespace {

std::optional<std::string> target_of_link(std::string const& link) {
  std::string buffer(1024, '\0');
  for (;;) {
    ssize_t const length = readlink(link.c_str(), buffer.data(), buffer.size());
    if (length < 0) return std::nullopt;
    if (static_cast<std::size_t>(length) < buffer.size()) {
      buffer.resize(static_cast<std::size_t>(length));
      return buffer;
    }
    buffer.resize(2 * buffer.size());  // it may have been cut off
  }
}

std::string resolve_links(std::string const& path, bool resolve_parent,
                          std::set<std::string>& visited) {
  if (path == "/" || !path.starts_with('/') || !visited.insert(path).second) return path;
  std::string folder = parent(path);
  if (resolve_parent) folder = resolve_links(folder, true, visited);
  std::string const joined = join(folder, name(path));
  struct stat info;
  if (lstat(joined.c_str(), &info) != 0 || !S_ISLNK(info.st_mode)) return joined;
  auto const target = target_of_link(joined);
  if (!target) {
    std::fprintf(stderr, "*** error reading link \u2018%s\u2019\n", joined.c_str());
    return "";
  }
  std::string const next = join(folder, *target);
  return next.size() < PATH_MAX ? resolve_links(next, resolve_parent, visited) : joined;
}

/// The folder that ".." in the absolute path `folder` is.
std::string folder_above(std::string const& folder) {
  struct stat info;
  bool const is_link = lstat(folder.c_str(), &info) == 0 && S_ISLNK(info.st_mode);
  std::unique_ptr<char, void (*)(void*)> const real(
      is_link ? realpath(folder.c_str(), nullptr) : nullptr, std::free);
  return parent(real ? real.get() : folder);
}

}  // namespace

bool exists(std::string const& path) {
  return !path.empty() && access(path.c_str(), F_OK) == 0;
}

dev_t device(std::string const& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0 ? info.st_dev : static_cast<dev_t>(-1);
}

std::string home() {
  std::vector<char> buffer(1024);
  passwd entry;
  passwd* found = nullptr;
  while (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE)
    buffer.resize(2 * buffer.size());
  return found && found->pw_dir ? found->pw_dir : "";
}

std::string cwd() {
  std::unique_ptr<char, void (*)(void*)> const folder(getcwd(nullptr, 0), std::free);
  return folder ? folder.get() : "";
}

std::string resolve(std::string const& path) {
  std::set<std::string> visited;
  std::string const normal = normalize(path);
  return normal.size() < PATH_MAX ? resolve_links(normal, true, visited) : normal;
}

std::string resolve_head(std::string const& path) {
  std::set<std::string> visited;
  return resolve_links(normalize(path), false, visited);
}

std::string standardize(std::string const& path) {
  bool const relative = !path.starts_with('/') && path != "~" && !path.starts_with("~/");
  std::string const working_folder = relative ? cwd() : "";
  if (relative && working_folder.empty()) return normalize(path);
  std::string const full = relative                ? working_folder + "/" + path
                           : path.starts_with('/') ? path
                                                   : platform::home_folder() + path.substr(1);
  std::string result = "/";
  std::istringstream components(full);
  for (std::string component; std::getline(components, component, '/');) {
    if (component.empty() || component == ".") continue;
    result = component == ".." ? folder_above(result)
                               : (result == "/" ? result : result + "/") + component;
  }
  return result;
}

std::string abbreviate_with_tilde(std::string const& path) {
  std::string const folder = platform::home_folder();
  if (path == folder) return "~";
  return folder != "/" && path.starts_with(folder + "/") ? "~" + path.substr(folder.size()) : path;
}

std::optional<file_error> read_content(std::string const& path, std::string& bytes) {
  file_reader reader;
  if (auto error = reader.open(path)) return error;
  reader.will_be_read_once();
  char buffer[8192];
  for (;;) {
    auto const [count, error] = reader.read(buffer, sizeof buffer);
    bytes.append(buffer, count);
    if (error || count < sizeof buffer) return error;
  }
}

std::string content(std::string const& path) {
  std::string bytes;
  return read_content(path, bytes) ? "" : bytes;
}

}  // namespace path
