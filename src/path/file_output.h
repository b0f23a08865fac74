#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "path/file_writer.h"

namespace path {

/// A file that is being written: the steps that both ways of writing have in common. Each gives
/// nothing, or what went wrong.
class file_output {
 public:
  explicit file_output(file_system_calls& calls) : calls_(calls), file_(calls) {}

  std::optional<file_error> open(std::string const& path, int flags, mode_t mode = 0);
  /// The same for a name in an open folder, which is called `path` in errors.
  std::optional<file_error> openat(int folder, std::string const& name, std::string const& path,
                                   int flags, mode_t mode = 0);
  /// Writes all of the contents, to a file that has just been opened, and calls `look` before each
  /// piece of them unless it is null. What that gives ends the writing.
  std::optional<file_error> write(file_contents const& contents,
                                  std::function<std::optional<file_error>()> const& look = nullptr);
  std::optional<file_error> sync();
  std::optional<file_error> close();

  /// After a system call on `descriptor()`: its error.
  file_error error(char const* operation) const;
  int descriptor() const { return file_.get(); }
  std::string const& path() const { return path_; }
  std::uint64_t bytes_written() const { return bytes_written_; }

 private:
  bool write_piece(unsigned char const* bytes, std::size_t size);
  void begin_writeback();

  file_system_calls& calls_;
  file_descriptor file_;
  std::string path_;
  std::uint64_t bytes_written_ = 0;
  std::uint64_t handed_over_ = 0;  ///< of these, what the disk has been told of
};

/// Why an existing file isn't written to, if so.
std::optional<file_error> refusal_to_write(std::string const& path, mode_t mode);

/// Makes sure that the name of a file just made is on the disk too.
std::optional<file_error> sync_folder_of(std::string const& path, file_system_calls& calls);

}  // namespace path
