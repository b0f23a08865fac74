#include "platform/utf.h"

#include <cstdint>
#include <iterator>

#include "encoding/supplementary.h"

namespace unicode {
namespace {

struct decoded {
  char32_t code_point;  // meaningful if `valid`
  std::size_t length;   // bytes to pass over, at least 1
  bool valid;
};

// Decodes the sequence at the start of `bytes`, which is not empty. Surrogates count as valid.
decoded decode(std::string_view bytes) {
  auto const lead = static_cast<std::uint8_t>(bytes[0]);
  if (lead < 0x80) return {lead, 1, true};
  if (lead < 0xC2 || lead > 0xF4) return {0, 1, false};
  std::size_t const length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  // The second byte's narrower range excludes overlong forms and what lies above U+10FFFF.
  std::uint8_t low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  std::uint8_t high = lead == 0xF4 ? 0x8F : 0xBF;
  char32_t c = lead & (0xFF >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    auto const byte = i < bytes.size() ? static_cast<std::uint8_t>(bytes[i]) : 0;
    if (byte < low || byte > high) return {0, i, false};
    c = c << 6 | (byte & 0x3F);
    low = 0x80, high = 0xBF;
  }
  return {c, length, true};
}

}  // namespace

std::string to_utf8(std::u16string_view text) {
  std::string out;
  out.reserve(text.size());
  encoding::encode_utf8_with_pairs(text.begin(), text.end(), std::back_inserter(out));
  return out;
}

std::u16string to_utf16(std::string_view text) {
  std::u16string out;
  out.reserve(text.size());
  while (!text.empty()) {
    decoded const d = decode(text);
    text.remove_prefix(d.length);
    if (!d.valid) {
      out += u'\xFFFD';
    } else if (d.code_point < 0x10000) {
      out += static_cast<char16_t>(d.code_point);
    } else {
      out += encoding::high_surrogate(d.code_point);
      out += encoding::low_surrogate(d.code_point);
    }
  }
  return out;
}

}  // namespace unicode
