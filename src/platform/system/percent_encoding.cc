#include "platform/system/percent_encoding.h"

#include <algorithm>
#include <charconv>

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

std::optional<std::string> percent_decoded(std::string_view text) {
  std::string result;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '%') {
      result += text[at];
      continue;
    }
    std::string_view const digits = text.substr(at + 1, 2);
    unsigned byte = 0;
    auto const read = std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
    if (digits.size() != 2 || read.ptr != digits.data() + 2) return std::nullopt;
    result += static_cast<char>(byte);
    at += 2;
  }
  return result;
}

std::optional<std::map<std::string, std::string, std::less<>>> query_fields(
    std::string_view query) {
  std::map<std::string, std::string, std::less<>> fields;
  while (!query.empty()) {
    std::string_view const field = query.substr(0, query.find('&'));
    query.remove_prefix(std::min(field.size() + 1, query.size()));
    std::size_t const equals = std::min(field.find('='), field.size());
    auto value = percent_decoded(field.substr(std::min(equals + 1, field.size())));
    if (!value) return std::nullopt;
    fields.insert_or_assign(std::string(field.substr(0, equals)), std::move(*value));
  }
  return fields;
}

}  // namespace platform
