#include "encoding/stream_encoder.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstring>
#include <utility>

#include "encoding/encoders.h"
#include "encoding/lanes.h"
#include "encoding/library_charset.h"
#include "encoding/supplementary.h"

// A save must cost little more than the writing. Runs of units that are the bytes of their value
// are narrowed 16 at a time; whatever needs a second look (line ends to be expanded, other
// characters) ends a run. The generic encoders say what the bytes must be.

namespace encoding {
namespace {

using pointer = char16_t const*;
using bytes = unsigned char*;

constexpr std::ptrdiff_t piece = 4096;  // units encoded between two looks at the buffer
constexpr std::size_t buffer_size = 65536;
constexpr std::size_t max_piece_size = 4 * piece + 16;  // CR LF in UTF-16, and room to overshoot

constexpr char16_t no_unit = 0xFFFF;  // for narrow(): refused anyway, so it stops nothing more

unsigned char* put_line_end(unsigned char* out, line_ending::type type) {
  *out++ = '\r';
  if (type == line_ending::CRLF) *out++ = '\n';
  return out;
}

/// Encodes units without a bit of `refused` as the byte of their value. For a run of others
/// calls `encode(first, last, out)`, which takes at least one unit off the front.
template <typename Encode>
unsigned char* narrow(char16_t const* first, char16_t const* last, unsigned char* out,
                      line_ending::type type, char16_t refused, Encode encode) {
  char16_t const stop = type == line_ending::LF ? no_unit : u'\n';
  auto const special = [&] {
    if (*first == stop && stop == u'\n') {
      out = put_line_end(out, type);
      ++first;
    } else {
      out = encode(first, last, out);
    }
  };
  while (last - first >= 16) {
    unsigned const mask = lanes::narrow(out, first, refused, stop);
    int const good = mask ? std::countr_zero(mask) : 16;
    first += good;
    out += good;
    if (mask) special();
  }
  while (first != last) {
    if ((*first & refused) || *first == stop) {
      special();
    } else {
      *out++ = static_cast<unsigned char>(*first++);
    }
  }
  return out;
}

/// The run of units with a bit of `refused` set, by a generic encoder.
template <typename Convert>
auto run_of(char16_t refused, Convert convert) {
  return [=](char16_t const*& first, char16_t const* last, unsigned char* out) {
    char16_t const* const end =
        std::find_if(first, last, [=](char16_t unit) { return !(unit & refused); });
    return convert(std::exchange(first, end), end, out);
  };
}

constexpr bool has_two_bytes(char16_t unit) {
  return unit >= 0x80 && unit < 0x800;
}

/// A run of units above 0x7F as UTF-8; with `pairs`, surrogates that make one are four bytes.
template <bool pairs>
bytes put_utf8_run(pointer& first, pointer last, bytes out) {
  pointer in = first;  // a local, which no byte written can alias
  do {
    char16_t const unit = *in;
    if (has_two_bytes(unit) && last - in >= 8 && has_two_bytes(in[1])) {
      unsigned const n = lanes::put_two_byte_sequences(out, in);
      in += n;
      out += 2 * n;
    } else if (pairs && is_high_surrogate(unit) && last - in > 1 && is_low_surrogate(in[1])) {
      out = put_utf8_sequence(joined_surrogates(unit, in[1]), out);
      in += 2;
    } else {
      out = put_utf8_sequence(unit, out);
      ++in;
    }
  } while (in != last && *in >= 0x80);
  first = in;
  return out;
}

template <std::endian order>
unsigned char* put_utf16(char16_t const* first, char16_t const* last, unsigned char* out,
                         line_ending::type type) {
  bool const expand = type != line_ending::LF;
  while (first != last) {
    if (last - first >= 8 && !(expand && lanes::equal(first, u'\n'))) {
      if (order == std::endian::native) {
        std::memcpy(out, first, 16);
      } else {
        lanes::swap_bytes(out, first);
      }
      first += 8;
      out += 16;
      continue;
    }
    for (int i = 0; i < 8 && first != last; ++i, ++first) {
      bool const line_end = expand && *first == u'\n';
      out = put_utf16_unit<order>(line_end ? u'\r' : *first, out);
      if (line_end && type == line_ending::CRLF) out = put_utf16_unit<order>(u'\n', out);
    }
  }
  return out;
}

}  // namespace

stream_encoder::stream_encoder(file_format format, byte_sink sink)
    : format_(format),
      sink_(std::move(sink)),
      buffer_(std::make_unique_for_overwrite<unsigned char[]>(buffer_size)),
      out_(buffer_.get()) {
  if (format_.charset == UTF8 && format_.byte_order_mark) {
    out_ = put_utf8_sequence(0xFEFF, out_);
  } else if (format_.charset == UTF16BE) {
    out_ = put_utf16_unit<std::endian::big>(0xFEFF, out_);
  } else if (format_.charset == UTF16LE) {
    out_ = put_utf16_unit<std::endian::little>(0xFEFF, out_);
  } else if (is_of_library(format_.charset)) {
    start_encoding_by_library(format_.charset);
    constexpr char16_t mark = 0xFEFF;
    if (format_.charset == UTF32BE || format_.charset == UTF32LE) put_by_library(&mark, &mark + 1);
  }
}

bool stream_encoder::put(char16_t const* first, char16_t const* last) {
  while (first != last && !failed_) {
    std::ptrdiff_t const size = std::min(last - first, piece);
    put_piece(first, first + size);
    first += size;
    if (buffer_size - (out_ - buffer_.get()) < max_piece_size) flush();
  }
  return !failed_;
}

bool stream_encoder::finish() {
  constexpr char16_t nothing = 0;
  if (is_of_library(format_.charset)) put_by_library(&nothing, &nothing, true);
  if (pending_high_) out_ = put_utf8_sequence(std::exchange(pending_high_, 0), out_);
  return flush();
}

bool stream_encoder::flush() {
  std::size_t const size = out_ - buffer_.get();
  out_ = buffer_.get();
  if (!failed_ && size) failed_ = !sink_(buffer_.get(), size);
  return !failed_;
}

void stream_encoder::put_pairs(char16_t const* first, char16_t const* last) {
  if (pending_high_) {
    char16_t const high = std::exchange(pending_high_, 0);
    bool const joined = is_low_surrogate(*first);
    out_ = put_utf8_sequence(joined ? joined_surrogates(high, *first) : high, out_);
    first += joined;
  }
  if (first != last && is_high_surrogate(last[-1])) pending_high_ = *--last;
  out_ = narrow(first, last, out_, format_.line_ending, 0xFF80, put_utf8_run<true>);
}

void stream_encoder::put_by_library(char16_t const* first, char16_t const* last, bool is_end) {
  std::u16string expanded;
  if (format_.line_ending != line_ending::LF && std::find(first, last, u'\n') != last) {
    for (; first != last; ++first)
      if (*first == u'\n')
        expanded += format_.line_ending == line_ending::CR ? u"\r" : u"\r\n";
      else
        expanded += *first;
    first = expanded.data();
    last = first + expanded.size();
  }
  std::string bytes;
  encode_by_library(first, last, format_.charset, is_end, bytes);
  if (bytes.size() > buffer_size - static_cast<std::size_t>(out_ - buffer_.get())) flush();
  out_ = std::copy(bytes.begin(), bytes.end(), out_);
}

void stream_encoder::put_piece(char16_t const* first, char16_t const* last) {
  if (is_of_library(format_.charset)) return put_by_library(first, last);
  auto const by = [&](char16_t refused, bytes (*convert)(pointer, pointer, bytes)) {
    return narrow(first, last, out_, format_.line_ending, refused, run_of(refused, convert));
  };
  switch (format_.charset) {
    case ASCII:
      out_ = by(0xFF80, convert_UnicodeToASCII<pointer, bytes>);
      break;
    case UTF8:
      if (format_.pairs) return put_pairs(first, last);
      out_ = narrow(first, last, out_, format_.line_ending, 0xFF80, put_utf8_run<false>);
      break;
    case UTF16BE:
      out_ = put_utf16<std::endian::big>(first, last, out_, format_.line_ending);
      break;
    case UTF16LE:
      out_ = put_utf16<std::endian::little>(first, last, out_, format_.line_ending);
      break;
    case Latin1:
      out_ = by(0xFF00, convert_UnicodeToLatin1<pointer, bytes>);
      break;
    case MacRoman:
      out_ = by(0xFF80, convert_UnicodeToMacRoman<pointer, bytes>);
      break;
    case CP1252:
      out_ = by(0xFF00, convert_UnicodeToCP1252<pointer, bytes>);
      break;
    default:
      assert(!"no charset");
      break;
  }
}

}  // namespace encoding
