#include "grammar/back_references.h"

namespace grammar {

bool has_back_references(std::string_view pattern) {
  bool escaped = false;
  for (char const c : pattern) {
    if (escaped && c >= '0' && c <= '9') return true;
    escaped = !escaped && c == '\\';
  }
  return false;
}

std::u16string expand_back_references(std::u16string_view pattern, std::u16string_view text,
                                      match_groups const& match) {
  std::u16string out;
  bool escaped = false;
  for (char16_t const c : pattern) {
    if (!escaped) {
      escaped = c == u'\\';
      if (!escaped) out += c;
      continue;
    }
    escaped = false;
    if (c < u'0' || c > u'9') {
      out += u'\\';
      out += c;
    } else if (match.is_set(c - u'0')) {
      auto const [begin, end] = match.groups[static_cast<std::size_t>(c - u'0')];
      escape_regex(
          text.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin)), out);
    }
  }
  return out;
}

void escape_regex(std::u16string_view units, std::u16string& out) {
  for (char16_t const c : units) {
    if (std::u16string_view(u"\\|([{}]).?*+^$").find(c) != std::u16string_view::npos) out += u'\\';
    out += c;
  }
}

}  // namespace grammar
