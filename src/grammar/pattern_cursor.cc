#include "grammar/pattern_cursor.h"

namespace grammar {

bool is_ascii_letter(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

bool class_after_backslash(char16_t c, symbol_set& set) {
  switch (c) {
    case u'w':
    case u'W':
      set = symbol_set::words();
      break;
    case u's':
    case u'S':
      set = symbol_set::of(" \t\n\v\f\r");
      break;
    case u'd':
    case u'D':
      set = symbol_set::of("0123456789");
      break;
    case u'h':
    case u'H':
      set = symbol_set::of("0123456789abcdefABCDEF");
      break;
    default:
      return false;
  }
  if (c < u'a') set = set.complement();
  set.has_other = true;
  set.has_end = false;
  return true;
}

bool pattern_cursor::take(std::u16string_view text) {
  if (!next_is(text)) return false;
  at += text.size();
  return true;
}

char16_t pattern_cursor::take() {
  if (!at_end()) return source[at++];
  failed = true;
  return 0;
}

void pattern_cursor::give_up() {
  failed = true;
  at = source.size();
}

bool pattern_cursor::unit_after_backslash(char16_t c, char16_t& unit) {
  constexpr std::u16string_view letters = u"tnvfrae", controls = u"\t\n\v\f\r\a\x1b";
  if (auto const i = letters.find(c); i != letters.npos) {
    unit = controls[i];
  } else if (c == u'x') {
    if (!hexadecimal(take(u"{") ? 8 : 2, unit) || unit >= 128) return false;
  } else if (c == u'u') {
    if (!hexadecimal(4, unit)) return false;
  } else if (c == u'0') {
    unsigned value = 0;
    for (int i = 0; i < 2 && !at_end() && next() >= u'0' && next() <= u'7'; ++i)
      value = value * 8 + (take() - u'0');
    unit = static_cast<char16_t>(value);
  } else {
    unit = c;
    return c != 0 && !is_ascii_letter(c) && !(c >= u'1' && c <= u'9');
  }
  return true;
}

bool pattern_cursor::hexadecimal(int most, char16_t& unit) {
  constexpr std::u16string_view digits = u"0123456789abcdef";
  unsigned value = 0;
  int read = 0;
  for (; read < most && !at_end(); ++read, ++at) {
    char16_t const c = next();
    auto const digit = digits.find(c >= u'A' && c <= u'F' ? static_cast<char16_t>(c + 32) : c);
    if (digit == digits.npos) break;
    value = value * 16 + static_cast<unsigned>(digit);
  }
  unit = static_cast<char16_t>(value);
  if (read == 0 || value > 0xffff) return false;
  return most == 8 ? take(u"}") : most == 2 || read == 4;
}

bool pattern_cursor::skip_property() {
  if (!take(u"{")) return false;
  while (char16_t const c = take())
    if (c == u'}') return true;
  return false;
}

}  // namespace grammar
