#include "layout/hidden_characters.h"

#include "platform/character_name.h"
#include "platform/utf.h"
#include "text/views/view.h"

#include <algorithm>
#include <cstdio>

namespace layout {
namespace {

constexpr char16_t first_right_to_left = 0x590;  // from here on scripts may join
constexpr std::size_t most_named = 20;

bool is_joiner(char16_t u) {
  return u == 0x200C || u == 0x200D;
}

bool is_hidden(char16_t u) {
  return u >= 0x34F &&
         (u == 0x34F || u == 0x61C || u == 0x180E || (0x200B <= u && u <= 0x200F) ||
          (0x202A <= u && u <= 0x202E) || (0x2060 <= u && u <= 0x206F) || u == 0xFEFF);
}

}  // namespace

bool is_hidden_character(std::u16string_view text, std::size_t at) {
  if (!is_hidden(text[at])) return false;
  return !is_joiner(text[at]) || at == 0 || text[at - 1] < first_right_to_left;
}

std::u16string hidden_characters_at(text::view_iterator const& it) {
  text::unit_view const line = it.base.storage->line_units(it.base.line);
  std::size_t first = it.base.column, last = first;
  while (first > 0 && is_hidden_character(line, first - 1)) --first;
  while (last < line.size() && is_hidden_character(line, last)) ++last;
  last = std::min(last, first + most_named);
  std::u16string result;
  for (; first < last; ++first) {
    char code[16];
    std::snprintf(code, sizeof code, "U+%04X ", static_cast<unsigned>(line[first]));
    if (!result.empty()) result += u'\n';
    result += unicode::to_utf16(code + platform::character_name(line[first]));
  }
  return result;
}

}  // namespace layout
