#pragma once

#include <string_view>

namespace plist {

/// The blanks of XML.
constexpr bool is_blank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/// `text` without the blanks around it.
constexpr std::string_view trimmed(std::string_view text) {
  while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
  return text;
}

}  // namespace plist
