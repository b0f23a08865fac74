#include "platform/escaped.h"

#include <unicode/utf8.h>

#include <cstdint>
#include <cstdio>

#include "platform/shown_characters.h"

namespace platform {
namespace {

std::string escaped_byte(unsigned char byte) {
  if (byte == '\n') return "\\n";
  if (byte == '\t') return "\\t";
  char text[8];
  std::snprintf(text, sizeof text, "\\x%02X", byte);
  return text;
}

std::string escape(std::string_view name, bool backslashes) {
  std::string out;
  auto const size = static_cast<std::int32_t>(name.size());
  for (std::int32_t at = 0; at < size;) {
    std::int32_t const start = at;
    UChar32 c = 0;
    U8_NEXT(name.data(), at, size, c);
    auto const bytes =
        name.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(at - start));
    if (c == '\\' && backslashes)
      out += "\\\\";
    else if (platform::is_shown_as_it_is(c))  // a wrong byte is -1
      out += bytes;
    else
      for (char const byte : bytes) out += escaped_byte(static_cast<unsigned char>(byte));
  }
  return out;
}

}  // namespace

std::string escaped(std::string_view text) {
  return escape(text, false);
}

std::string escaped_name(std::string_view name) {
  return escape(name, true);
}

}  // namespace platform
