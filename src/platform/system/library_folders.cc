#include "platform/system/library_folders.h"

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string_view>
#include <utility>

namespace platform {
namespace {

constexpr char const* product = "/Quirnote";

std::string without_trailing_slashes(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

std::optional<std::string> absolute_variable(environment const& env, std::string_view name) {
  auto const found = env.find(name);
  if (found == env.end() || !found->second.starts_with('/')) return std::nullopt;
  return without_trailing_slashes(found->second);
}

std::string base_folder(environment const& env, std::string_view variable,
                        std::string_view below_home) {
  if (auto set = absolute_variable(env, variable)) return *set;
  std::string const home = home_folder(env);
  return (home == "/" ? "" : home) + std::string(below_home);
}

bool is_folder(std::string const& path) {
  struct stat info;
  return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

// Others must not be able to plant a folder under this name and listen in.
bool is_private_folder(std::string const& path) {
  int const fd = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (fd < 0) return false;
  struct stat info;
  bool ok = ::fstat(fd, &info) == 0 && info.st_uid == ::geteuid();
  if (ok && (info.st_mode & 07777) != 0700) ok = ::fchmod(fd, 0700) == 0;
  ::close(fd);
  return ok;
}

bool make_private_folder(std::string const& path) {
  if (::mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) return false;
  return is_private_folder(path);
}

bool is_empty(int folder) {
  int const copy = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  DIR* const entries = copy < 0 ? nullptr : ::fdopendir(copy);
  if (entries == nullptr) {
    if (copy >= 0) ::close(copy);
    return false;
  }
  int count = 0;
  while (::readdir(entries) != nullptr) ++count;
  ::closedir(entries);
  return count == 2;  // "." and ".."
}

/// A folder that root has just made in another user's folder is given to that user, who is to use
/// it too. He may have put another one of root's in its place meanwhile: so only an empty one does.
void give_to_owner_of(int parent, char const* name) {
  struct stat above, made;
  if (::fstat(parent, &above) != 0 || above.st_uid == 0) return;
  int const folder = ::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (folder < 0) return;
  if (::fstat(folder, &made) == 0 && made.st_uid == 0 && is_empty(folder)) [[maybe_unused]]
    int const ignored = ::fchown(folder, above.st_uid, above.st_gid);
  ::close(folder);
}

/// The folder, open; -1 with errno.
int make_folder(int parent, char const* name, unsigned mode) {
  bool const made = ::mkdirat(parent, name, mode) == 0;
  if (!made && errno != EEXIST) return -1;
  if (made && ::geteuid() == 0) give_to_owner_of(parent, name);
  int const result = ::openat(parent, name, O_PATH | O_DIRECTORY | O_CLOEXEC);
  if (result < 0 && errno == ENOENT) errno = ENOTDIR;  // a link that leads nowhere
  return result;
}

bool belongs_to_us(std::string const& folder) {
  struct stat info;
  return ::stat(folder.c_str(), &info) == 0 && info.st_uid == ::geteuid();
}

std::filesystem::path running_program() {
  std::error_code error;
  auto const program = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? "/usr/bin/quirnote" : program;
}

}  // namespace

environment current_environment() {
  environment result;
  for (char** entry = environ; entry && *entry; ++entry) {
    std::string_view const text = *entry;
    auto const equal = text.find('=');
    if (equal != std::string_view::npos)
      result.emplace(text.substr(0, equal), text.substr(equal + 1));
  }
  return result;
}

std::string home_folder(environment const& env) {
  if (auto home = absolute_variable(env, "HOME")) return *home;
  char buffer[4096];
  passwd entry, *found = nullptr;
  if (::getpwuid_r(::getuid(), &entry, buffer, sizeof buffer, &found) == 0 && found &&
      found->pw_dir && found->pw_dir[0] == '/')
    return without_trailing_slashes(found->pw_dir);
  return "/";
}

std::string user_data_folder(environment const& env) {
  return base_folder(env, "XDG_DATA_HOME", "/.local/share") + product;
}

std::string config_folder(environment const& env) {
  return base_folder(env, "XDG_CONFIG_HOME", "/.config") + product;
}

std::string cache_folder(environment const& env) {
  return base_folder(env, "XDG_CACHE_HOME", "/.cache") + product;
}

std::string state_folder(environment const& env) {
  return base_folder(env, "XDG_STATE_HOME", "/.local/state") + product;
}

std::vector<std::string> library_domains(environment const& env) {
  std::vector<std::string> result;
  auto const add = [&](std::string folder) {
    if (std::find(result.begin(), result.end(), folder) == result.end())
      result.push_back(std::move(folder));
  };
  add(user_data_folder(env));
  add(std::string("/usr/local/share") + product);
  auto const set = env.find("XDG_DATA_DIRS");
  std::string_view list = "/usr/local/share:/usr/share";
  if (set != env.end() && !set->second.empty()) list = set->second;
  while (!list.empty()) {
    auto const colon = std::min(list.find(':'), list.size());
    if (list.starts_with('/'))
      add(without_trailing_slashes(std::string(list.substr(0, colon))) + product);
    list.remove_prefix(std::min(colon + 1, list.size()));
  }
  return result;
}

std::optional<std::string> runtime_folder(environment const& env) {
  if (auto const base = absolute_variable(env, "XDG_RUNTIME_DIR")) {
    std::string const folder = *base + product;
    if (make_private_folder(folder)) return folder;
  }
  std::string const folder = cache_folder(env) + "/run";
  // In another user's it would be inaccessible to that user.
  if (make_folders(cache_folder(env)) && belongs_to_us(cache_folder(env)) &&
      make_private_folder(folder))
    return folder;
  return std::nullopt;
}

std::string shared_support_folder(std::string const& program) {
  std::filesystem::path const top =
      std::filesystem::path(program).lexically_normal().parent_path().parent_path();
  std::string const installed = (top / "share").string() + product;
  std::error_code error;
  if (is_folder(installed) || !std::filesystem::exists(top / "CMakeCache.txt", error))
    return installed;
  return (top.parent_path().parent_path() / "share").string();
}

std::string shared_support_folder() {
  return shared_support_folder(running_program().string());
}

std::string module_folder() {
  return (running_program().parent_path().parent_path() / "lib/quirnote").string();
}

bool make_folders(std::string const& path, unsigned mode) {
  errno = ENAMETOOLONG;  // the path would be too long to use
  if (path.size() >= PATH_MAX) return false;
  int at = ::open(path.starts_with('/') ? "/" : ".", O_PATH | O_DIRECTORY | O_CLOEXEC);
  std::string_view rest = path;
  while (at >= 0 && !rest.empty()) {
    std::string const name(rest.substr(0, rest.find('/')));
    rest.remove_prefix(std::min(name.size() + 1, rest.size()));
    if (name.empty()) continue;
    int next = ::openat(at, name.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (next < 0 && errno == ENOENT) next = make_folder(at, name.c_str(), mode);
    int const code = errno;
    ::close(std::exchange(at, next));
    errno = code;
  }
  if (at < 0) return false;
  ::close(at);
  return true;
}

}  // namespace platform
