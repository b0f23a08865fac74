#include "path/file_reader.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>

namespace path {
namespace {

constexpr std::size_t largest_read = std::size_t{1} << 30;  // the kernel's own limit is just above

}  // namespace

std::optional<file_error> refusal_of_kind(std::string const& path, mode_t mode) {
  if (S_ISREG(mode)) return std::nullopt;
  if (S_ISDIR(mode)) return file_error{"open", path, EISDIR, "It is a folder"};
  char const* const message = S_ISFIFO(mode)   ? "It is a named pipe"
                              : S_ISSOCK(mode) ? "It is a socket"
                                               : "It is a device";
  return file_error{"open", path, EINVAL, message};
}

file_reader::file_reader(file_system_calls& calls) : calls_(calls), file_(calls) {}

file_error file_reader::error(char const* operation, int code) const {
  return make_file_error(operation, path_, code);
}

std::optional<file_error> file_reader::open(std::string const& path) {
  path_ = path;
  // To open a pipe wakes the program at its other end, and to open a device may move something.
  struct stat info;
  if (::stat(path.c_str(), &info) == 0)
    if (auto refusal = refusal_of_kind(path, info.st_mode)) return refusal;
  if (int const code = file_.open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY))
    return error("open", code);
  if (calls_.fstat(file_.get(), &info_) != 0) return error("fstat", errno);
  return refusal_of_kind(path, info_.st_mode);
}

read_result file_reader::read(void* place, std::size_t count) {
  read_result result;
  while (result.bytes < count) {
    std::size_t const piece = std::min(count - result.bytes, largest_read);
    ssize_t const bytes = uninterrupted(
        [&] { return calls_.read(file_.get(), static_cast<char*>(place) + result.bytes, piece); });
    if (bytes < 0) result.error = error("read", errno);
    if (bytes <= 0) break;
    result.bytes += static_cast<std::size_t>(bytes);
  }
  return result;
}

void file_reader::will_be_read_once() {
  posix_fadvise(file_.get(), 0, 0, POSIX_FADV_NOREUSE);
}

}  // namespace path
