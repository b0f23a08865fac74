#pragma once

#include <array>
#include <cassert>

#include "encoding/charset.h"
#include "encoding/decoders.h"
#include "encoding/encoders.h"

/// Conversion between the bytes of a file and the 16-bit units of the text buffer.
///
///     std::vector<char16_t> units;
///     charset_t charset = encoding::estimate(bytes.begin(), bytes.end());
///     convert_to_unicode(bytes.begin(), bytes.end(), charset, std::back_inserter(units));
///
/// These take any iterators. For whole files in memory see decode_in_place.h, stream_encoder.h.
namespace encoding {

/// Decodes the bytes [first, last) of a charset other than Unknown. Sets `*has_bom` if a byte
/// order mark was skipped. Gives the new position of `out`, which receives char16_t.
template <typename In, typename Out>
Out convert_to_unicode(In first, In last, charset_t charset, Out out, bool* has_bom = nullptr) {
  using converter = Out (*)(In, In, Out, bool*);
  static constexpr std::array<converter, charset_count> converters = {
      dummy_copy<In, Out>,
      convert_UTF8ToUnicode<In, Out>,
      convert_UTF16BEToUnicode<In, Out>,
      convert_UTF16LEToUnicode<In, Out>,
      dummy_copy<In, Out>,
      convert_MacRomanToUnicode<In, Out>,
      convert_CP1252ToUnicode<In, Out>,
  };
  assert(charset < converters.size());
  return converters[charset](first, last, out, has_bom);
}

/// Encodes the units [first, last) in a charset other than Unknown. Gives the new position of
/// `out`, which receives unsigned char.
template <typename In, typename Out>
Out convert_from_unicode(In first, In last, charset_t charset, Out out) {
  using converter = Out (*)(In, In, Out);
  static constexpr std::array<converter, charset_count> converters = {
      convert_UnicodeToASCII<In, Out>,   convert_UnicodeToUTF8<In, Out>,
      convert_UnicodeToUTF16BE<In, Out>, convert_UnicodeToUTF16LE<In, Out>,
      convert_UnicodeToLatin1<In, Out>,  convert_UnicodeToMacRoman<In, Out>,
      convert_UnicodeToCP1252<In, Out>,
  };
  assert(charset < converters.size());
  return converters[charset](first, last, out);
}

}  // namespace encoding
