#pragma once

#include <optional>
#include <string>

#include "documents/safety_copy.h"
#include "encoding/stream_encoder.h"
#include "path/file_writer.h"

namespace documents {

/// What is to be saved where, and how it is protected meanwhile.
struct save_request {
  std::string path;
  path::file_contents contents;
  encoding::file_format format;  ///< in which the contents were made
  /// What may be overwritten, and what the file gets besides; `protect` is set by save_file.
  path::write_options options;
  /// The user wants the file overwritten even if no safety copy can be made.
  bool without_copy = false;
};

/// Writes the contents: atomically if the user default WynSaveAtomically is true or there is no
/// file yet, unless the file would lose something by that (other links to it, its owner, its
/// attributes); else in place, when a safety copy holds the new bytes until they are on the disk.
/// Nothing if all went well, and `written` is set. If the file is damaged `copy` holds what it
/// should hold.
std::optional<path::write_error> save_file(
    save_request const& request, std::optional<safety_copy>& copy,
    std::optional<path::file_version>& written,
    path::file_system_calls& calls = path::file_system_calls::system());

/// Which of the file's attributes writing it would take away that can't be given back, in words
/// for the user ("its set-user-ID mark"); "" if none.
std::string lost_by_saving(std::string const& path);

/// Whether there is a file whose permissions let no user write it.
bool is_read_only(std::string const& path);

}  // namespace documents
