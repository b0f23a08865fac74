#include "encoding/library_charset.h"

#include <unicode/ucnv.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

#include "encoding/supplementary.h"

namespace encoding {
namespace {

constexpr std::size_t piece = 16384;   // bytes or units converted at once
constexpr std::size_t most_bytes = 8;  // of a unit
constexpr char16_t byte_order_mark = 0xFEFF;

// By charset_t, from the first of the library on: by ICU's own names, so that no alias can change
// what a file means.
constexpr std::array<char const*, charsets_end - Unknown - 1> library_name = {"gb18030",
                                                                              "ibm-943_P15A-2003",
                                                                              "euc-jp-2007",
                                                                              "windows-949-2000",
                                                                              "windows-950-2000",
                                                                              "ibm-878_P100-1996",
                                                                              "ibm-5346_P100-1998",
                                                                              "ibm-5347_P100-1998",
                                                                              "ibm-5349_P100-1998",
                                                                              "ibm-5350_P100-1998",
                                                                              "ibm-9447_P100-2002",
                                                                              "ibm-9448_X100-2005",
                                                                              "ibm-9449_P100-2002",
                                                                              "ibm-912_P100-1995",
                                                                              "ibm-913_P100-2000",
                                                                              "ibm-914_P100-1995",
                                                                              "ibm-915_P100-1995",
                                                                              "ibm-1089_P100-1995",
                                                                              "ibm-9005_X110-2007",
                                                                              "ibm-5012_P100-1999",
                                                                              "ibm-920_P100-1995",
                                                                              "iso-8859_10-1998",
                                                                              "iso-8859_11-2001",
                                                                              "ibm-921_P100-1995",
                                                                              "iso-8859_14-1998",
                                                                              "ibm-923_P100-1998",
                                                                              "UTF-32BE",
                                                                              "UTF-32LE"};

struct closer {
  void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using converter = std::unique_ptr<UConverter, closer>;

converter opened(charset_t charset) {
  UErrorCode error = U_ZERO_ERROR;
  converter result(
      ucnv_open(library_name[static_cast<std::size_t>(charset - Unknown - 1)], &error));
  if (U_FAILURE(error)) return nullptr;
  error = U_ZERO_ERROR;
  ucnv_setSubstChars(result.get(), "?", 1, &error);  // those of several bytes keep their own
  ucnv_setFallback(result.get(), false);
  return result;
}

enum use { decoding, encoding_text, testing, uses };

/// Opening one costs more than converting a line.
UConverter* converter_for(charset_t charset, use what) {
  thread_local std::array<std::array<converter, uses>, charsets_end> known;
  converter& found = known[charset][what];
  if (!found) found = opened(charset);
  return found.get();
}

bool is_utf32(charset_t charset) {
  return charset == UTF32BE || charset == UTF32LE;
}

/// ICU takes Shift JIS for that of a machine which had three control characters in other places.
char16_t with_usual_control(char16_t unit) {
  return unit == 0x1A ? 0x7F : unit == 0x1C ? 0x1A : unit == 0x7F ? 0x1C : unit;
}
char16_t with_odd_control(char16_t unit) {
  return unit == 0x1A ? 0x1C : unit == 0x1C ? 0x7F : unit == 0x7F ? 0x1A : unit;
}

void decode(UConverter* from, charset_t charset, char const* first, char const* last, bool is_end,
            char16_t*& out, char16_t* out_end, UErrorCode& error) {
  char16_t* const begin = out;
  ucnv_toUnicode(from, &out, out_end, &first, last, nullptr, is_end, &error);
  if (charset == ShiftJIS) std::transform(begin, out, begin, with_usual_control);
}

void encode(UConverter* to, charset_t charset, char16_t const* first, char16_t const* last,
            bool is_end, std::string& out) {
  std::u16string odd;
  if (charset == ShiftJIS) {
    odd.assign(first, last);
    std::transform(odd.begin(), odd.end(), odd.begin(), with_odd_control);
    first = odd.data();
    last = first + odd.size();
  }
  do {
    std::size_t const size = out.size();
    auto const part = std::min<std::size_t>(static_cast<std::size_t>(last - first), piece);
    out.resize(size + most_bytes * part + 64);
    char* target = out.data() + size;
    UErrorCode error = U_ZERO_ERROR;
    bool const flush = is_end && part == static_cast<std::size_t>(last - first);
    ucnv_fromUnicode(to, &target, out.data() + out.size(), &first, first + part, nullptr, flush,
                     &error);
    out.resize(static_cast<std::size_t>(target - out.data()));
    if (U_FAILURE(error)) return;
  } while (first != last);
}

/// Whether the bytes of a text that is encoded again, in parts, are those of the file.
class comparison {
 public:
  comparison(UConverter* to, charset_t charset) : to_(to), charset_(charset) {
    ucnv_resetFromUnicode(to);
  }

  void add_bytes(std::string_view bytes) { expected_.append(bytes); }
  void add_units(char16_t const* first, char16_t const* last, bool is_end) {
    if (!equal_) return;
    made_.clear();
    encode(to_, charset_, first, last, is_end, made_);
    equal_ = std::string_view(expected_).starts_with(made_) &&
             (!is_end || made_.size() == expected_.size());
    expected_.erase(0, made_.size());
  }
  bool equal() const { return equal_; }

 private:
  UConverter* const to_;
  charset_t const charset_;
  std::string expected_, made_;
  bool equal_ = true;
};

/// Whether units that are a text of their own come back from their bytes.
bool comes_back(char16_t const* first, char16_t const* last, charset_t charset) {
  UConverter* const with = converter_for(charset, testing);
  ucnv_reset(with);
  std::string bytes;
  encode(with, charset, first, last, true, bytes);
  std::vector<char16_t> again(bytes.size() + 1);
  char16_t* out = again.data();
  UErrorCode error = U_ZERO_ERROR;
  decode(with, charset, bytes.data(), bytes.data() + bytes.size(), true, out,
         again.data() + again.size(), error);
  return U_SUCCESS(error) && std::equal(first, last, again.data(), out);
}

}  // namespace

decoded decode_by_library(char16_t* block, std::size_t byte_count, charset_t charset) {
  auto const* bytes = reinterpret_cast<char const*>(block) + byte_count;
  decoded result;
  UConverter* const from = converter_for(charset, decoding);
  UConverter* const to = converter_for(charset, testing);
  if (from == nullptr || to == nullptr) {
    for (; result.units < byte_count; ++result.units)
      block[result.units] = static_cast<unsigned char>(bytes[result.units]);
    result.exact = false;
    return result;
  }
  ucnv_reset(from);
  comparison compared(to, charset);
  // The units are written over bytes that have been read, but not while they are.
  std::string part;
  char16_t* out = block;
  for (std::size_t at = 0; at < byte_count; at += part.size()) {
    part.assign(bytes + at, std::min(piece, byte_count - at));
    bool const is_end = at + part.size() == byte_count;
    compared.add_bytes(part);
    char16_t* const begin = out;
    UErrorCode error = U_ZERO_ERROR;
    decode(from, charset, part.data(), part.data() + part.size(), is_end, out,
           block + at + part.size(), error);
    compared.add_units(begin, out, is_end);
    if (U_FAILURE(error)) result.exact = false;
  }
  result.exact = result.exact && compared.equal();
  result.units = static_cast<std::size_t>(out - block);
  if (is_utf32(charset) && result.units != 0 && block[0] == byte_order_mark) {
    std::memmove(block, block + 1, --result.units * sizeof *block);
    result.has_bom = true;
  }
  return result;
}

void start_encoding_by_library(charset_t charset) {
  if (UConverter* const to = converter_for(charset, encoding_text)) ucnv_resetFromUnicode(to);
}

void encode_by_library(char16_t const* first, char16_t const* last, charset_t charset, bool is_end,
                       std::string& out) {
  UConverter* const to = converter_for(charset, encoding_text);
  if (to != nullptr) return encode(to, charset, first, last, is_end, out);
  for (; first != last; ++first) out += *first < 0x80 ? static_cast<char>(*first) : '?';
}

char16_t const* first_lost_by_library(char16_t const* first, char16_t const* last,
                                      charset_t charset) {
  auto const is_plain = [](char16_t unit) { return unit < 0x80; };
  bool const is_there = converter_for(charset, testing) != nullptr;
  // All of a run at once, and one by one only what is lost somewhere.
  for (char16_t const* at = first; (at = std::find_if_not(at, last, is_plain)) != last;) {
    if (!is_there) return at;
    char16_t const* end = at + std::min<std::ptrdiff_t>(last - at, piece);
    if (end != last && is_high_surrogate(end[-1]) && end - at > 1) --end;
    if (comes_back(at, end, charset)) {
      at = end;
      continue;
    }
    while (at != end) {
      bool const pair = end - at > 1 && is_high_surrogate(at[0]) && is_low_surrogate(at[1]);
      char16_t const* const next = at + (pair ? 2 : 1);
      if (!comes_back(at, next, charset)) return at;
      at = next;
    }
  }
  return last;
}

}  // namespace encoding
