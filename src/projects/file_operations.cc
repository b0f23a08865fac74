#include "projects/file_operations.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "path/path.h"
#include "platform/system/rename_to_new.h"

namespace projects {
namespace {

namespace fs = std::filesystem;

bool is_taken(std::string const& path) {
  struct stat info;
  return ::lstat(path.c_str(), &info) == 0;
}

operation_error failure(char const* operation, std::string const& path, int code) {
  return path::make_file_error(operation, path, code);
}

bool is_in_itself(std::string const& from, std::string const& to) {
  return to == from || to.starts_with(from + "/");
}

}  // namespace

std::string fault_of_name(std::string const& name) {
  if (name.empty()) return "A name is needed.";
  if (name == "." || name == "..") return "This name stands for a folder already.";
  if (name.find('/') != name.npos) return "A name can't contain a slash.";
  if (name.find('\0') != name.npos) return "A name can't contain this character.";
  if (name.size() > NAME_MAX) return "The name is too long.";
  return "";
}

operation_error make_file(std::string const& path) {
  int const file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (file < 0) return failure("open", path, errno);
  if (::close(file) != 0) return failure("close", path, errno);
  return std::nullopt;
}

operation_error make_folder(std::string const& path) {
  if (::mkdir(path.c_str(), 0777) != 0) return failure("mkdir", path, errno);
  return std::nullopt;
}

operation_error move_file(std::string const& from, std::string const& to) {
  if (is_in_itself(from, to)) return failure("rename", from, EINVAL);
  int const code =
      platform::rename_to_new(AT_FDCWD, from.c_str(), to.c_str(), platform::file_calls::system());
  if (code == 0) return std::nullopt;
  if (code != EXDEV) return failure("rename", from, code);
  if (auto const error = copy_file(from, to)) return error;
  std::error_code error;
  fs::remove_all(from, error);
  if (error) return failure("remove", from, error.value());
  return std::nullopt;
}

operation_error copy_file(std::string const& from, std::string const& to) {
  if (is_in_itself(from, to)) return failure("copy", from, EINVAL);
  if (is_taken(to)) return failure("copy", to, EEXIST);
  std::error_code error;
  fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::copy_symlinks, error);
  if (!error) return std::nullopt;
  std::error_code ignored;
  if (error != std::errc::file_exists) fs::remove_all(to, ignored);
  return failure("copy", from, error.value());
}

std::string path_for_copy(std::string const& folder, std::string const& name, bool may_be_same) {
  std::string path = path::join(folder, name);
  if (may_be_same && !is_taken(path)) return path;
  std::size_t const dot = name.rfind('.');
  bool const has_extension = dot != name.npos && dot != 0;
  std::string const stem = name.substr(0, has_extension ? dot : name.npos) + " copy";
  std::string const extension = has_extension ? name.substr(dot) : "";
  path = path::join(folder, stem + extension);
  for (int n = 2; is_taken(path); ++n)
    path = path::join(folder, stem + " " + std::to_string(n) + extension);
  return path;
}

}  // namespace projects
