#pragma once

#include <algorithm>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "encoding/converters.h"
#include "encoding/decode_in_place.h"
#include "encoding/estimate.h"
#include "encoding/estimate_buffer.h"
#include "encoding/harmonize_units.h"
#include "encoding/lost_units.h"
#include "encoding/stream_encoder.h"
#include "encoding/supplementary.h"

/// The functions for whole files against the generic ones, for unit tests and fuzzing alike.
/// Each check gives what differs, or an empty text.
namespace agreement {

using bytes = std::vector<unsigned char>;
using units = std::vector<char16_t>;

inline std::string dump(auto const& range) {
  std::ostringstream out;
  out << std::hex;
  for (unsigned element : range) out << element << ' ';
  return out.str();
}

struct text {
  units content;
  bool has_bom = false;
  bool exact = false;
};

inline units decode(bytes const& in, encoding::charset_t charset, bool pairs, bool* has_bom) {
  units out;
  if (charset == encoding::UTF8 && pairs) {
    encoding::decode_utf8_with_pairs(in.begin(), in.end(), std::back_inserter(out), has_bom);
  } else {
    encoding::convert_to_unicode(in.begin(), in.end(), charset, std::back_inserter(out), has_bom);
  }
  return out;
}

inline bytes encode(units in, encoding::file_format format) {
  bytes out;
  if (format.line_ending != line_ending::LF) {
    units expanded;
    for (char16_t unit : in) {
      if (unit == u'\n') expanded.push_back(u'\r');
      if (unit != u'\n' || format.line_ending == line_ending::CRLF) expanded.push_back(unit);
    }
    in = expanded;
  }
  if (format.charset == encoding::UTF8 && format.byte_order_mark) in.insert(in.begin(), 0xFEFF);
  auto sink = std::back_inserter(out);
  if (format.charset == encoding::UTF8 && format.pairs) {
    encoding::encode_utf8_with_pairs(in.begin(), in.end(), sink);
  } else {
    encoding::convert_from_unicode(in.begin(), in.end(), format.charset, sink);
  }
  return out;
}

inline text decode_generic(bytes const& in, encoding::charset_t charset, bool pairs) {
  text t;
  t.content = decode(in, charset, pairs, &t.has_bom);
  t.exact = encode(t.content, {charset, line_ending::LF, t.has_bom, pairs}) == in;
  return t;
}

inline text decode_fast(bytes const& in, encoding::charset_t charset, bool pairs) {
  std::size_t const size = in.size();
  auto const block = std::make_unique<char16_t[]>(size);
  if (size) std::memcpy(reinterpret_cast<char*>(block.get()) + size, in.data(), size);
  auto const d = encoding::decode_in_place(block.get(), size, charset, pairs);
  return {units(block.get(), block.get() + d.units), d.has_bom, d.exact};
}

inline std::string in_decoding(bytes const& in) {
  auto const estimated = encoding::estimate(in.begin(), in.end());
  if (estimated != encoding::estimate_buffer(in.data(), in.size())) return "estimate " + dump(in);
  for (int charset = encoding::ASCII; charset < encoding::Unknown; ++charset) {
    for (bool pairs : {false, true}) {
      text const a = decode_generic(in, encoding::charset_t(charset), pairs);
      text const b = decode_fast(in, encoding::charset_t(charset), pairs);
      std::string const where = std::string(encoding::charset_name[charset]) + ": " + dump(in);
      if (a.content != b.content) return "units, " + where + "\n" + dump(b.content);
      if (a.has_bom != b.has_bom) return "has_bom, " + where;
      if (a.exact != b.exact) return "exact, " + where;
    }
  }
  return {};
}

/// `part` is the number of units given to the encoder at a time.
inline bytes encode_fast(units const& in, encoding::file_format format, std::size_t part) {
  bytes out;
  encoding::stream_encoder encoder(format, [&](unsigned char const* data, std::size_t size) {
    out.insert(out.end(), data, data + size);
    return true;
  });
  for (std::size_t at = 0; at < in.size(); at += part)
    encoder.put(in.data() + at, in.data() + std::min(at + part, in.size()));
  encoder.finish();
  return out;
}

inline std::string in_losses(units const& in) {
  using namespace encoding;
  for (auto charset : {ASCII, Latin1, MacRoman, CP1252}) {
    units const again = decode(encode(in, {charset}), charset, false, nullptr);
    auto const slow = std::mismatch(in.begin(), in.end(), again.begin()).first - in.begin();
    auto const fast = first_lost_unit(in.data(), in.data() + in.size(), charset) - in.data();
    if (slow != fast) return "loss, " + std::string(charset_name[charset]) + ": " + dump(in);
  }
  return {};
}

inline std::string in_encoding(units const& in, std::size_t part) {
  for (int charset = encoding::ASCII; charset < encoding::Unknown; ++charset) {
    for (auto type : {line_ending::LF, line_ending::CR, line_ending::CRLF}) {
      for (int flags = 0; flags < (charset == encoding::UTF8 ? 4 : 1); ++flags) {
        encoding::file_format const format{encoding::charset_t(charset), type, (flags & 1) != 0,
                                           (flags & 2) != 0};
        if (encode(in, format) != encode_fast(in, format, part))
          return std::string("encoding, ") + encoding::charset_name[charset] + ' ' +
                 line_ending::name[type] + ' ' + std::to_string(flags) + ": " + dump(in);
      }
    }
  }
  return in_losses(in);
}

/// Charsets of the library have no generic form: what is exact comes back as the same bytes, and
/// a unit that isn't lost as the same unit.
inline std::string in_library(bytes const& in, std::size_t part) {
  using namespace encoding;
  for (int number = Unknown + 1; number < charsets_end; ++number) {
    auto const charset = charset_t(number);
    std::string const where = std::string(charset_name[charset]) + ": " + dump(in);
    text const a = decode_fast(in, charset, true);
    bool const has_mark = a.has_bom || (charset != UTF32BE && charset != UTF32LE);
    bytes const again = encode_fast(a.content, {charset}, part);
    if (has_mark && a.exact != (again == in)) return "exact, " + where;
    units const& content = a.content;
    auto const* const end = content.data() + content.size();
    auto const kept = first_lost_unit(content.data(), end, charset) - content.data();
    text const b = decode_fast(again, charset, true);
    auto const same =
        std::mismatch(content.begin(), content.end(), b.content.begin(), b.content.end()).first -
        content.begin();
    // A pair is lost from its first unit on.
    if (same < kept || same > kept + 1) return "loss, " + where + "\n" + dump(b.content);
  }
  return {};
}

inline std::string in_line_endings(units const& in) {
  units slow = in, fast = in;
  line_ending::type type;
  slow.erase(encoding::harmonize_line_endings(slow.begin(), slow.end(), &type), slow.end());
  auto const result = encoding::harmonize_units(fast.data(), fast.data() + fast.size());
  fast.resize(result.last - fast.data());
  auto const line_ends = std::size_t(std::count(slow.begin(), slow.end(), u'\n'));
  if (slow == fast && type == result.ends.prevailing() && line_ends == result.ends.lines_ended())
    return {};
  return "line endings: " + dump(in);
}

}  // namespace agreement
