#pragma once

#include <string>
#include <string_view>

#include "path/file_system_calls.h"

/// Replacing small files of our own as a whole: settings, items of bundles. True on success; after
/// a failure the old contents stand. Documents are written by path/file_writer.h.
namespace path {

/// Where a file's new contents are written before they take its place: a file of its own if there
/// is one at the path already, else the target itself, whose folder is made.
///
///     path::intermediate_t file(path);
///     return write_all(file.write_path()) && file.commit();
class intermediate_t {
 public:
  /// A link is followed, so that it survives. The intermediate file is made here, empty and with
  /// mode 0600; `write_path` is "" if that fails.
  explicit intermediate_t(std::string const& path,
                          file_system_calls& calls = file_system_calls::system());
  intermediate_t(intermediate_t const&) = delete;
  intermediate_t& operator=(intermediate_t const&) = delete;
  /// Removes an intermediate file that has not been committed.
  ~intermediate_t();

  std::string const& target() const { return target_; }
  std::string const& write_path() const { return write_path_; }
  /// False if the target itself is written.
  bool is_separate() const { return write_path_ != target_; }

  /// Puts what was written in the target's place.
  bool commit();

 private:
  std::string target_;
  std::string write_path_;
  file_system_calls& calls_;
  bool committed_ = false;
};

/// Moves `from` over `to`, whose folder is made if there is no such file, and makes sure that the
/// new name is on the disk. If they are on different devices it does nothing, and gives true.
bool swap_and_unlink(std::string const& from, std::string const& to,
                     file_system_calls& calls = file_system_calls::system());

/// Replaces the contents of the file, or makes it with mode 0664 and its folder too. The bytes are
/// on the disk before they take the place of the old ones. Owner and group are kept where that is
/// allowed. What is no regular file, or has attributes that can't be kept, is left alone.
bool set_content(std::string const& path, std::string_view bytes,
                 file_system_calls& calls = file_system_calls::system());
bool set_content(std::string const& path, char const* first, char const* last);

}  // namespace path
