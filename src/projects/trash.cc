#include "projects/trash.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <string_view>

#include "path/file_system.h"
#include "path/path.h"
#include "platform/system/rename_to_new.h"

namespace projects {
namespace {

constexpr int most_names = 10000;  // that are tried

struct trash_folder {
  std::string path;
  std::string top;  // what paths in it are relative to; empty in the home folder's
};

bool make_folder(std::string const& path) {
  struct stat info;
  if (::stat(path.c_str(), &info) == 0) return S_ISDIR(info.st_mode);
  std::string const above = path::parent(path);
  if (above == path || !make_folder(above)) return false;
  return ::mkdir(path.c_str(), 0700) == 0 || errno == EEXIST;
}

bool is_usable(std::string const& trash) {
  return make_folder(trash + "/files") && make_folder(trash + "/info");
}

std::string home_trash() {
  char const* const data = std::getenv("XDG_DATA_HOME");
  bool const is_given = data != nullptr && *data == '/';
  char const* const home = std::getenv("HOME");
  std::string const folder = home != nullptr && *home == '/' ? home : path::home();
  return path::join(is_given ? data : path::join(folder, ".local/share"), "Trash");
}

// The topmost folder of the file system that the folder is on.
std::string top_of(std::string folder, dev_t device) {
  while (folder != "/") {
    std::string const above = path::parent(folder);
    if (path::device(above) != device) break;
    folder = above;
  }
  return folder;
}

// One that an administrator has made for all: nobody may move away or lead elsewhere what others
// put there.
bool is_safe_for_all(std::string const& path) {
  struct stat info;
  return ::lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode) && (info.st_mode & S_ISVTX);
}

bool is_own_folder(std::string const& path) {
  struct stat info;
  return ::lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode) && info.st_uid == ::geteuid();
}

std::optional<trash_folder> trash_for(std::string const& folder, dev_t device) {
  std::string const home = home_trash();
  if (is_usable(home) && path::device(home) == device) return trash_folder{home, ""};
  std::string const top = top_of(folder, device), user = std::to_string(::geteuid());
  if (std::string const all = path::join(top, ".Trash"); is_safe_for_all(all)) {
    std::string const own = path::join(all, user);
    if (is_usable(own) && is_own_folder(own)) return trash_folder{own, top};
  }
  std::string const own = path::join(top, ".Trash-" + user);
  if (is_usable(own) && is_own_folder(own)) return trash_folder{own, top};
  return std::nullopt;
}

std::string in_percent(std::string_view path) {
  constexpr char const* digits = "0123456789ABCDEF";
  constexpr std::string_view plain = "/-_.~";
  std::string result;
  for (char const c : path) {
    auto const byte = static_cast<unsigned char>(c);
    bool const is_letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    if (is_letter || (c >= '0' && c <= '9') || plain.find(c) != plain.npos)
      result += c;
    else
      result.append({'%', digits[byte >> 4], digits[byte & 15]});
  }
  return result;
}

std::string note_for(std::string const& path, trash_folder const& trash) {
  std::string const from = trash.top.empty()  ? path
                           : trash.top == "/" ? path.substr(1)
                                              : path.substr(trash.top.size() + 1);
  std::time_t const now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  char date[32];
  std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &local);
  return "[Trash Info]\nPath=" + in_percent(from) + "\nDeletionDate=" + date + "\n";
}

// Returns 0 or an errno.
int write_new(std::string const& path, std::string const& text) {
  int const file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (file < 0) return errno;
  errno = 0;
  bool const is_written = ::write(file, text.data(), text.size()) == ssize_t(text.size());
  int const code = is_written ? 0 : errno != 0 ? errno : ENOSPC;
  if (::close(file) != 0 && code == 0) return errno;
  return code;
}

}  // namespace

// The note comes first, as its name says which names are taken.
std::optional<path::file_error> move_to_trash(std::string const& path) {
  struct stat info;
  if (::lstat(path.c_str(), &info) != 0) return path::make_file_error("lstat", path, errno);
  std::string const folder = path::parent(path), name = path::name(path);
  // That of the folder, as a file may be a place where another file system is mounted.
  dev_t const device = path::device(folder);
  if (info.st_dev != device) return path::make_file_error("rename", path, EBUSY);
  auto const trash = trash_for(path::resolve(folder), device);
  if (!trash) return path::make_file_error("rename", path, EXDEV);
  std::string const real = trash->top.empty() ? path : path::join(path::resolve(folder), name);
  for (int n = 1; n < most_names; ++n) {
    std::string const kept = n == 1 ? name : name + "." + std::to_string(n);
    std::string const note = trash->path + "/info/" + kept + ".trashinfo";
    int code = write_new(note, note_for(real, *trash));
    if (code == EEXIST) continue;
    if (code == 0) {
      code =
          platform::rename_to_new(AT_FDCWD, path.c_str(), (trash->path + "/files/" + kept).c_str(),
                                  platform::file_calls::system());
      if (code == 0) return std::nullopt;
    }
    ::unlink(note.c_str());
    if (code != EEXIST) return path::make_file_error("rename", path, code);
  }
  return path::make_file_error("rename", path, EEXIST);
}

}  // namespace projects
