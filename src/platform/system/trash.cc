#include "platform/system/trash.h"

#include "platform/system/library_folders.h"
#include "platform/system/percent_encoding.h"
#include "platform/system/rename_to_new.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <optional>

namespace platform {
namespace {

std::string const& shared_trash_name() {
  static auto const& name = *new std::string(".Trash-" + std::to_string(::getuid()));
  return name;
}

std::optional<dev_t> device_of(std::string const& path) {
  struct stat info;
  if (::lstat(path.c_str(), &info) != 0) return std::nullopt;
  return info.st_dev;
}

std::string home_trash() {
  std::string const data = user_data_folder();  // $XDG_DATA_HOME/Quirnote
  return data.substr(0, data.rfind('/')) + "/Trash";
}

/// The topmost folder above the path that is on the same volume.
std::string top_of_volume(std::filesystem::path path, dev_t device) {
  while (path.has_relative_path() && device_of(path.parent_path().string()) == device)
    path = path.parent_path();
  return path.string();
}

std::string information_for(std::string const& path) {
  std::time_t const now = std::time(nullptr);
  std::tm local{};
  ::localtime_r(&now, &local);
  char date[32];
  std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &local);
  return "[Trash Info]\nPath=" + platform::percent_encoded(path, "/-_.~") +
         "\nDeletionDate=" + date + "\n";
}

int write_all(int fd, std::string const& text) {
  ssize_t const written = ::write(fd, text.data(), text.size());
  if (::close(fd) != 0) return errno;
  return written == static_cast<ssize_t>(text.size()) ? 0 : EIO;
}

/// The information is made first, and by that the name in the trash is taken.
int move_into(std::string const& trash, std::string const& path) {
  if (!make_folders(trash + "/files") || !make_folders(trash + "/info")) return errno;
  std::string const name = std::filesystem::path(path).filename().string();
  for (int n = 1; n < 10000; ++n) {
    std::string const free = name + (n == 1 ? "" : " " + std::to_string(n));
    std::string const info = trash + "/info/" + free + ".trashinfo";
    int const fd = ::open(info.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd < 0 && errno == EEXIST) continue;
    if (fd < 0) return errno;
    int error = write_all(fd, information_for(path));
    if (error == 0)
      error = rename_to_new(AT_FDCWD, path.c_str(), (trash + "/files/" + free).c_str(),
                            file_calls::system());
    if (error != 0) ::unlink(info.c_str());
    if (error != EEXIST) return error;
  }
  return EEXIST;
}

}  // namespace

int move_to_trash(std::string const& path) {
  auto const device = device_of(path);
  if (!device) return errno;
  std::string const home = home_trash();
  if (make_folders(home) && device_of(home) == device) return move_into(home, path);
  return move_into(top_of_volume(path, *device) + "/" + shared_trash_name(), path);
}

}  // namespace platform
