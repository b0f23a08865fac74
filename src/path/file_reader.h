#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "path/file_error.h"
#include "path/file_system_calls.h"

namespace path {

struct read_result {
  std::size_t bytes = 0;  ///< read, also when there is an error
  std::optional<file_error> error;
};

/// Reads a regular file into memory that the caller provides. Anything else is refused when it is
/// opened, and opening never waits: a folder, a named pipe, a socket, a device.
///
///     path::file_reader reader;
///     if (auto error = reader.open(path)) return error;
///     auto [bytes, error] = reader.read(buffer, sizeof buffer);
class file_reader {
 public:
  explicit file_reader(file_system_calls& calls = file_system_calls::system());

  /// Nothing if it is open now.
  std::optional<file_error> open(std::string const& path);

  /// As it was when the file was opened. The file may hold fewer or more bytes than `st_size` by
  /// the time it is read, and those that the kernel makes up (/proc) always do.
  struct stat const& info() const {
    return info_;
  }

  /// Reads on from where the last call ended. Fewer than `count` bytes come at the end of the file
  /// only, or with an error.
  read_result read(void* place, std::size_t count);

  /// Tells the system not to keep the file's pages for a second reading.
  void will_be_read_once();

 private:
  file_error error(char const* operation, int code) const;

  file_system_calls& calls_;
  file_descriptor file_;
  std::string path_;
  struct stat info_ {};
};

/// Why a file of this kind isn't read or written as text; nothing for a regular one.
std::optional<file_error> refusal_of_kind(std::string const& path, mode_t mode);

}  // namespace path
