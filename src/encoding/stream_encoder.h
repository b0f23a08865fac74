#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "encoding/charset.h"
#include "encoding/line_ending.h"

namespace encoding {

/// Takes the next piece of encoded bytes, which it may use until it returns. False, say for a
/// full disk, ends the encoding.
using byte_sink = std::function<bool(unsigned char const* bytes, std::size_t size)>;

/// How the units of a document become a file.
struct file_format {
  charset_t charset = UTF8;
  line_ending::type line_ending = line_ending::LF;
  bool byte_order_mark = false;  ///< a mark before UTF-8; UTF-16 always has one
  bool pairs = false;            ///< UTF-8 as by encode_utf8_with_pairs
};

/// Encodes text of any size in pieces, line ends included, without a second copy of it. The
/// bytes are those of expanding the line ends and calling convert_from_unicode.
///
///     stream_encoder encoder(format, [fd](auto* bytes, auto size) { return write(...); });
///     bool written = encoder.put(first, last) && encoder.finish();
class stream_encoder {
 public:
  stream_encoder(file_format format, byte_sink sink);

  /// The next part of the text; parts may be cut anywhere. False once the sink has given false.
  bool put(char16_t const* first, char16_t const* last);
  /// To be called once, after the last part.
  bool finish();

 private:
  void put_piece(char16_t const* first, char16_t const* last);
  void put_by_library(char16_t const* first, char16_t const* last, bool is_end = false);
  void put_pairs(char16_t const* first, char16_t const* last);
  bool flush();

  file_format format_;
  byte_sink sink_;
  std::unique_ptr<unsigned char[]> buffer_;
  unsigned char* out_;
  char16_t pending_high_ = 0;  // a high surrogate whose partner may begin the next part
  bool failed_ = false;
};

}  // namespace encoding
