#include "platform/system/percent_encoding.h"

namespace platform {

std::string percent_encoded(std::string_view bytes, std::string_view plain) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string result;
  for (char const c : bytes) {
    auto const byte = static_cast<unsigned char>(c);
    if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
        plain.find(c) != plain.npos)
      result += c;
    else
      result += {'%', digits[byte >> 4], digits[byte & 15]};
  }
  return result;
}

}  // namespace platform
