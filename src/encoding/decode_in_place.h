#pragma once

#include <cstddef>

#include "encoding/charset.h"

namespace encoding {

struct decoded {
  std::size_t units = 0;
  bool has_bom = false;
  /// Whether encoding the units again, in the same charset and with a mark if there was one,
  /// gives the same bytes. False for malformed UTF-8, UTF-16 without a mark, bytes that the
  /// charset doesn't have.
  bool exact = true;
};

/// Decodes the bytes of a whole file without a second block. `block` has room for `byte_count`
/// units; the bytes stand in the upper half of it, that is from block + byte_count bytes on, and
/// the units are written from its start, over the bytes when these have been read. No byte gives
/// more than one unit, so none is overwritten unread.
///
/// The units are those of convert_to_unicode or, with `pairs` and UTF-8, decode_utf8_with_pairs.
///
///     auto block = std::make_unique_for_overwrite<char16_t[]>(size);
///     auto bytes = reinterpret_cast<unsigned char*>(block.get()) + size;   // read the file here
///     decoded text = decode_in_place(block.get(), size, estimate_buffer(bytes, size), false);
decoded decode_in_place(char16_t* block, std::size_t byte_count, charset_t charset, bool pairs);

}  // namespace encoding
