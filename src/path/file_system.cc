#include "path/file_system.h"

#include <fcntl.h>
#include <limits.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <optional>
#include <sstream>
#include <vector>

#include "path/file_reader.h"
#include "path/path.h"
#include "platform/log.h"
#include "platform/system/library_folders.h"
#include "platform/system/links.h"

namespace path {
namespace {

/// The target of what stands at `path`, if that is a link. False, after a word on standard error,
/// for a link that can't be read.
bool read_link(std::string const& path, std::optional<std::string>& target) {
  struct stat info;
  if (lstat(path.c_str(), &info) != 0 || !S_ISLNK(info.st_mode)) return true;
  target = platform::target_of_link(path);
  if (!target) platform::log_text("*** error reading link \u2018" + path + "\u2019\n");
  return target.has_value();
}

/// Follows the links in every component. Past platform::most_links of them the rest is joined
/// unresolved.
std::string resolve_links(std::string const& path) {
  std::string done = "/";
  std::string rest = path;
  for (int links = 0; !rest.empty();) {
    rest.erase(0, rest.find_first_not_of('/'));
    std::size_t const end = std::min(rest.find('/'), rest.size());
    std::string const component = rest.substr(0, end);
    rest.erase(0, end);
    if (component.empty()) break;
    if (component == ".." && done == "/") {
      done = "/..";  // stays, as in any normalized path
      continue;
    }
    std::string const joined = join(done, component);
    std::optional<std::string> target;
    if (component != ".." && !read_link(joined, target)) return "";
    if (!target) {
      done = joined;
      continue;
    }
    if (++links > platform::most_links || target->size() + rest.size() >= PATH_MAX)
      return join(joined, rest.empty() ? "." : rest.substr(1));
    if (target->starts_with('/')) done = "/";
    rest = *target + rest;
  }
  return done;
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
  std::string const normal = normalize(path);
  if (!normal.starts_with('/') || normal.size() >= PATH_MAX) return normal;
  return resolve_links(normal);
}

std::string resolve_head(std::string const& path) {
  std::string result = normalize(path);
  if (!result.starts_with('/')) return result;
  for (int links = 0; links < platform::most_links; ++links) {
    std::optional<std::string> target;
    if (!read_link(result, target)) return "";
    if (!target) break;
    std::string const next = join(parent(result), *target);
    if (next.size() >= PATH_MAX) break;
    result = next;
  }
  return result;
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
  bool too_large = static_cast<std::uint64_t>(reader.info().st_size) > largest_content;
  char buffer[8192];
  while (!too_large) {
    auto const [count, error] = reader.read(buffer, sizeof buffer);
    bytes.append(buffer, count);
    if (error || count < sizeof buffer) return error;
    too_large = bytes.size() > largest_content;
  }
  return make_file_error("read", path, EFBIG);
}

std::string content(std::string const& path) {
  std::string bytes;
  return read_content(path, bytes) ? "" : bytes;
}

}  // namespace path
