#pragma once

#include <iterator>
#include <string>

#include "documents/storage_bytes.h"
#include "encoding/converters.h"
#include "encoding/supplementary.h"

/// Whether the straightforward converters bring the bytes back.
inline bool come_back_plainly(std::string const& bytes, encoding::charset_t charset) {
  std::u16string units;
  std::string back;
  bool mark = false;
  if (charset == encoding::UTF8) {
    encoding::decode_utf8_with_pairs(bytes.begin(), bytes.end(), std::back_inserter(units), &mark);
    if (mark) back = "\xEF\xBB\xBF";
    encoding::encode_utf8_with_pairs(units.begin(), units.end(), std::back_inserter(back));
  } else {
    encoding::convert_to_unicode(bytes.begin(), bytes.end(), charset, std::back_inserter(units));
    encoding::convert_from_unicode(units.begin(), units.end(), charset, std::back_inserter(back));
  }
  return back == bytes;
}

/// A sink that gathers all pieces.
inline auto appending_to(std::string& bytes) {
  return [&bytes](unsigned char const* piece, std::size_t size) {
    bytes.append(reinterpret_cast<char const*>(piece), size);
    return true;
  };
}
