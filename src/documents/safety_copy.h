#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "documents/file_stamp.h"
#include "documents/file_text.h"
#include "encoding/stream_encoder.h"
#include "path/file_writer.h"

namespace documents {

/// Where the text in a safety copy belongs.
struct safety_copy_origin {
  std::string path;   ///< of the file it is to be saved in; empty for an untitled document
  std::string title;  ///< what an untitled document was called
  encoding::file_format format;  ///< of the bytes in the copy
  /// Whether the file was being overwritten with these bytes, so that it may hold some of them.
  bool overwrites = true;
  file_date date = 0;  ///< when the copy was made; set by `create`
  /// The charset that the user has chosen for the file, where the bytes are in another one because
  /// it can't hold the text.
  std::optional<encoding::charset_t> charset_of_file = std::nullopt;
};

/// Bytes that may stand whole nowhere else, in a file of their own: SafetyCopy-... in the state
/// folder (root's own, if that of the settings is another user's), which no other user can enter.
/// It begins with a line that gives the length of a property list, in bytes; that says where the
/// rest, the bytes, belongs.
///
/// The file is locked as long as its object lives, so that of several running programs none takes
/// another's copy for a left-over one. The file outlives the object unless `remove` is called, and
/// is offered at the next start. Movable; main thread only.
class safety_copy {
 public:
  /// Makes one. The bytes and their name are on the disk when nothing is returned; after an error
  /// nothing is left behind. The date is set.
  static std::optional<path::file_error> create(
      safety_copy_origin origin, path::file_contents const& contents,
      std::optional<safety_copy>& copy,
      path::file_system_calls& calls = path::file_system_calls::system());

  /// The same in the first folder that takes it: the state folder, the runtime folder, that of the
  /// cache, the file's own folder, and one of this user's in /tmp. The error is that of the first.
  static std::optional<path::file_error> create_anywhere(
      safety_copy_origin const& origin, path::file_contents const& contents,
      std::optional<safety_copy>& copy,
      path::file_system_calls& calls = path::file_system_calls::system());

  /// Those that no running program holds, oldest first; removes what an interrupted `create` left.
  /// Files of other users, links and whatever wasn't made by `create` are passed over, and so are
  /// those in the folders of files.
  static std::vector<safety_copy> left_over();
  /// Those in the file's own folder that belong to it; removes what interrupted ones left there.
  static std::vector<safety_copy> left_over_beside(std::string const& path);

  safety_copy(safety_copy&&) noexcept;
  safety_copy& operator=(safety_copy&&) noexcept;
  ~safety_copy();

  safety_copy_origin const& origin() const { return origin_; }
  /// "notes.txt", or the title of what was untitled, fit to be shown.
  std::string name() const;
  std::string const& file() const { return file_; }

  /// The text; units as when the file itself is loaded. Throws std::bad_alloc.
  std::optional<path::file_error> read(file_text& text) const;
  /// Whether the file at the origin's path holds the same bytes, and is on the disk.
  bool is_in_place() const;

  void remove();

 private:
  safety_copy(std::string file, std::unique_ptr<path::file_descriptor> lock);
  static std::optional<path::file_error> create_as(std::string const& name,
                                                   safety_copy_origin origin,
                                                   path::file_contents const& contents,
                                                   std::optional<safety_copy>& copy,
                                                   path::file_system_calls& calls);
  static std::optional<safety_copy> found_at(std::string const& path);
  bool read_header();

  std::string file_;
  std::unique_ptr<path::file_descriptor> lock_;
  safety_copy_origin origin_;
  std::size_t header_size_ = 0;  ///< in bytes
};

}  // namespace documents
