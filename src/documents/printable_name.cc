#include "documents/printable_name.h"

#include "path/path.h"
#include "platform/shown_characters.h"
#include "platform/utf.h"

namespace documents {

std::string printable(std::string const& path) {
  std::u16string text = unicode::to_utf16(path);
  for (std::size_t i = 0; i < text.size(); ++i) {
    char16_t& unit = text[i];
    bool const pair = (unit & 0xFC00) == 0xD800 && (text[i + 1] & 0xFC00) == 0xDC00;
    if (pair)
      ++i;
    else if (unit < 0x20)
      unit = static_cast<char16_t>(0x2400 + unit);
    else if (unit == 0x7F)
      unit = 0x2421;
    else if (!platform::is_shown_as_it_is(unit))
      unit = 0xFFFD;
  }
  return unicode::to_utf8(text);
}

std::string printable_name(std::string const& path) {
  return printable(path::name(path));
}

}  // namespace documents
