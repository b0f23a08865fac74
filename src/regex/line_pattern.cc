#include "regex/line_pattern.h"

#include <oniguruma.h>

namespace regex {
namespace {

using namespace std::string_view_literals;

bool is_one_of(char16_t unit, std::u16string_view set) {
  return set.find(unit) != set.npos;
}

bool is_letter_or_digit(char16_t unit) {
  return (u'0' <= unit && unit <= u'9') || (u'a' <= unit && unit <= u'z') ||
         (u'A' <= unit && unit <= u'Z');
}

// What stands after a backslash. A letter before "-" might begin a range of a class.
bool is_safe_escape(std::u16string_view rest) {
  if (rest.empty()) return false;
  char16_t const next = rest.size() > 1 ? rest[1] : u'\0';
  if (is_one_of(rest[0], u"dwhSbBAzkg")) return next != u'-';
  if (u'1' <= rest[0] && rest[0] <= u'9') return next < u'0' || next > u'9';
  return !is_letter_or_digit(rest[0]) && rest[0] >= u' ';
}

// What stands after "(?": groups, look-around, names; of options those that change no line.
bool is_safe_group(std::u16string_view rest) {
  std::size_t const options = rest.find_first_not_of(u"ix-");
  if (options == rest.npos) return false;
  return is_one_of(rest[options], options == 0 ? u":=!><"sv : u":)"sv);
}

}  // namespace

bool is_line_pattern(std::u16string_view source, unsigned options) {
  if (options & ONIG_OPTION_MULTILINE) return false;
  for (std::size_t i = 0; i < source.size(); ++i) {
    std::u16string_view const rest = source.substr(i + 1);
    if (source[i] < u' ') return false;
    if (source[i] == u'\\') {
      if (!is_safe_escape(rest)) return false;
      ++i;
    } else if (source[i] == u'[') {
      if (rest.starts_with(u'^') || rest.starts_with(u':')) return false;
    } else if (source[i] == u'(') {
      if (rest.starts_with(u'*') || (rest.starts_with(u'?') && !is_safe_group(rest.substr(1))))
        return false;
    }
  }
  return true;
}

}  // namespace regex
