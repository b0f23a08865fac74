#include "path/file_output.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cassert>
#include <cerrno>
#include <new>

#include "path/file_reader.h"

namespace path {

std::optional<file_error> refusal_to_write(std::string const& path, mode_t mode) {
  if (auto refusal = refusal_of_kind(path, mode)) return refusal;
  if (mode & 0222) return std::nullopt;
  return make_file_error("open", path, EACCES);
}

file_error file_output::error(char const* operation) const {
  return make_file_error(operation, path_, errno);
}

std::optional<file_error> file_output::open(std::string const& path, int flags, mode_t mode) {
  path_ = path;
  int const code = file_.open(path, flags | O_NONBLOCK | O_NOCTTY, mode);
  if (code) return make_file_error("open", path, code);
  return std::nullopt;
}

std::optional<file_error> file_output::openat(int folder, std::string const& name,
                                              std::string const& path, int flags, mode_t mode) {
  path_ = path;
  int const code = file_.openat(folder, name, flags | O_NONBLOCK | O_NOCTTY, mode);
  if (code) return make_file_error("open", path, code);
  return std::nullopt;
}

bool file_output::write_piece(unsigned char const* bytes, std::size_t size) {
  while (size != 0) {
    ssize_t const written = uninterrupted([&] { return calls_.write(file_.get(), bytes, size); });
    if (written == 0) errno = ENOSPC;
    if (written <= 0) return false;
    bytes += written;
    size -= static_cast<std::size_t>(written);
    bytes_written_ += static_cast<std::uint64_t>(written);
  }
  begin_writeback();
  return true;
}

// So that the disk is at work while the rest is made, rather than from the sync on. Only a hint:
// what becomes of the bytes is told by the sync.
void file_output::begin_writeback() {
  constexpr std::uint64_t step = std::uint64_t{4} << 20;
  std::uint64_t const waiting = bytes_written_ - handed_over_;
  if (waiting < step) return;
  ::sync_file_range(file_.get(), static_cast<off_t>(handed_over_), static_cast<off_t>(waiting),
                    SYNC_FILE_RANGE_WRITE);
  handed_over_ = bytes_written_;
}

std::optional<file_error> file_output::write(
    file_contents const& contents, std::function<std::optional<file_error>()> const& look) {
  std::optional<file_error> failure;
  try {
    contents.produce([&](unsigned char const* bytes, std::size_t size) {
      if (look) failure = look();
      if (!failure && !write_piece(bytes, size)) failure = error("write");
      return !failure;
    });
  } catch (std::bad_alloc const&) {
    return make_file_error("write", path_, ENOMEM);
  }
  assert(failure || bytes_written_ == contents.size);
  return failure;
}

std::optional<file_error> file_output::sync() {
  int const result = uninterrupted([&] { return calls_.fsync(file_.get()); });
  if (result == 0 || errno == EINVAL || errno == EROFS) return std::nullopt;  // nothing to sync to
  return error("fsync");
}

std::optional<file_error> file_output::close() {
  if (int const code = file_.close()) return make_file_error("close", path_, code);
  return std::nullopt;
}

std::optional<file_error> sync_folder_of(std::string const& path, file_system_calls& calls) {
  file_output output(calls);
  if (output.open(platform::folder_of(path), O_RDONLY | O_DIRECTORY))
    return std::nullopt;  // writable, but not readable
  if (auto failure = output.sync()) return failure;
  return output.close();
}

}  // namespace path
