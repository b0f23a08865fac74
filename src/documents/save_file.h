#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

#include "path/file_writer.h"

namespace documents {

/// Writes the contents at `path`, atomically if the user default WynSaveAtomically is true. What
/// can't be written atomically is written in place. Nothing if all went well.
std::optional<path::write_error> save_file(std::string const& path,
                                           path::file_contents const& contents);

/// The same for a file whose permissions forbid it: they are set aside for so long.
std::optional<path::write_error> save_read_only_file(std::string const& path,
                                                     path::file_contents const& contents);

/// Whether there is a file whose permissions let nobody write it.
bool is_read_only(std::string const& path);

/// What a file keeps when it is saved again or elsewhere: its permissions, owner and group.
class file_attributes {
 public:
  /// Those of the file that the path leads to; none if there is no file.
  static file_attributes of(std::string const& path);

  /// Sets what differs and may be set.
  void apply_to(std::string const& path) const;

 private:
  std::optional<struct stat> info_;
};

}  // namespace documents
