#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include "documents/file_stamp.h"
#include "encoding/charset.h"
#include "encoding/line_ending.h"
#include "path/file_error.h"
#include "path/file_place.h"
#include "text/text_block.h"

namespace documents {

/// A file as text: what it holds and how it was written.
struct file_text {
  text::text_block units;  ///< every line end is an LF
  encoding::charset_t charset = encoding::ASCII;
  bool byte_order_mark = false;
  line_ending::type line_ending = line_ending::LF;
  /// Whether writing the units in the same charset, with the line ends that were there, gives the
  /// same bytes. False if some of them are no text in that charset.
  bool exact = true;
  /// Its line ends are mixed, and control characters tell that it is no text: to make the line ends
  /// equal, as is done to every text, would damage it.
  bool binary = false;
  /// Of the file that was read, as of before the reading, so that what is written meanwhile counts
  /// as a later change. Nothing if there was no file.
  std::optional<file_stamp> stamp;
  std::optional<struct stat> info;
  /// Where the path led then; no place at all if it led elsewhere a moment later.
  path::file_place place;
};

/// The most bytes that a file can have to be read as text: none gives more than one unit, and
/// lengths of texts are counted in int.
inline constexpr std::uint64_t largest_file = std::numeric_limits<int>::max();

/// By the user default WynPreserveSupplementaryCharacters: whether a character of UTF-8 above
/// U+FFFF is to be two units.
bool preserves_supplementary_characters();

/// Reads the file at `path` in `charset`, or in the one that it seems to be in. With `pairs` a
/// character of UTF-8 above U+FFFF is two units. The bytes are read into the memory in which they
/// are then decoded, twice their size, and that is all that is used. Nothing if `text` has been
/// set; EFBIG for more than `largest_file` bytes. Throws std::bad_alloc. The first `skip` bytes are
/// passed over.
std::optional<path::file_error> read_file_text(std::string const& path,
                                               std::optional<encoding::charset_t> charset,
                                               bool pairs, file_text& text, std::size_t skip = 0);

/// The same of all that comes from a pipe, a socket or a file that is open already, up to its end.
/// `name` is what errors call it. There is no stamp.
std::optional<path::file_error> read_stream_text(int descriptor, std::string const& name,
                                                 bool pairs, file_text& text);

}  // namespace documents
