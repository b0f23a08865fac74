#include "documents/printable_name.h"

#include "path/path.h"
#include "platform/utf.h"

namespace documents {

std::string printable(std::string const& path) {
  std::u16string text = unicode::to_utf16(path);
  for (char16_t& unit : text) {
    if (unit < 0x20) unit = static_cast<char16_t>(0x2400 + unit);
    if (unit == 0x7F) unit = 0x2421;
    if ((unit >= 0x80 && unit < 0xA0) || unit == 0x2028 || unit == 0x2029) unit = 0xFFFD;
  }
  for (std::size_t i = 0; i < text.size(); ++i) {
    bool const pair = (text[i] & 0xFC00) == 0xD800 && (text[i + 1] & 0xFC00) == 0xDC00;
    if (pair)
      ++i;
    else if ((text[i] & 0xF800) == 0xD800)
      text[i] = 0xFFFD;
  }
  return unicode::to_utf8(text);
}

std::string printable_name(std::string const& path) {
  return printable(path::name(path));
}

std::string quoted(std::string const& name) {
  return "\u201C" + name + "\u201D";
}

}  // namespace documents
