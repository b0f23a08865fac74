#include "plist/utf8.h"

namespace plist {

std::size_t utf8_length(std::string_view text) {
  auto const byte = [&](std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u;
  };
  auto const trails = [&](std::size_t count) {
    for (std::size_t i = 1; i <= count; ++i)
      if ((byte(i) & 0xC0) != 0x80) return false;
    return true;
  };
  unsigned const lead = byte(0);
  if (lead < 0x80) return 1;
  if (lead < 0xC2 || lead > 0xF4) return 0;
  if (lead < 0xE0) return trails(1) ? 2 : 0;
  if (lead < 0xF0) {
    unsigned const top = (lead & 15) << 6 | (byte(1) & 63);
    bool const surrogate = top >= 0xD800 >> 6 && top < 0xE000 >> 6;
    return trails(2) && top >= 0x800 >> 6 && !surrogate ? 3 : 0;
  }
  unsigned const top = (lead & 7) << 6 | (byte(1) & 63);
  return trails(3) && top >= 0x10 && top < 0x110 ? 4 : 0;
}

bool is_utf8(std::string_view text) {
  while (!text.empty()) {
    std::size_t const length = utf8_length(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

}  // namespace plist
