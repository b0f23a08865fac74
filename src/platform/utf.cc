#include "platform/utf.h"

#include <cstdint>

namespace unicode {
namespace {

constexpr bool is_high(char32_t c) {
  return (c & 0xFFFFFC00) == 0xD800;
}
constexpr bool is_low(char32_t c) {
  return (c & 0xFFFFFC00) == 0xDC00;
}

void append_utf8(std::string& out, char32_t c) {
  auto const trail = [&](int shift) { out += static_cast<char>(0x80 | ((c >> shift) & 0x3F)); };
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xC0 | (c >> 6));
    trail(0);
  } else if (c < 0x10000) {
    out += static_cast<char>(0xE0 | (c >> 12));
    trail(6), trail(0);
  } else {
    out += static_cast<char>(0xF0 | (c >> 18));
    trail(12), trail(6), trail(0);
  }
}

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
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t c = text[i];
    if (is_high(c) && i + 1 < text.size() && is_low(text[i + 1]))
      c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00);
    append_utf8(out, c);
  }
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
      out += static_cast<char16_t>(0xD7C0 + (d.code_point >> 10));
      out += static_cast<char16_t>(0xDC00 | (d.code_point & 0x3FF));
    }
  }
  return out;
}

bool is_valid_utf8(std::string_view text) {
  while (!text.empty()) {
    decoded const d = decode(text);
    if (!d.valid || is_high(d.code_point) || is_low(d.code_point)) return false;
    text.remove_prefix(d.length);
  }
  return true;
}

}  // namespace unicode
