#include "snippets/parser_base.h"

namespace parser {

bool parser_base_t::parse_char(std::string_view set) {
  if (!is_at(set)) return false;
  ++it_;
  return true;
}

bool parser_base_t::parse_int(std::string& value) {
  std::string digits;
  if (!parse_chars("0123456789", digits)) return false;
  auto const zeros = digits.find_first_not_of('0');
  value = zeros == std::string::npos ? "0" : digits.substr(zeros);
  return true;
}

bool parser_base_t::parse_chars(std::string_view set, std::string& out) {
  char const* const first = it_;
  while (is_at(set)) ++it_;
  out.assign(first, it_);
  return it_ != first;
}

bool parser_base_t::parse_until(std::string_view stops, std::string& out) {
  char const* const start = it_;
  std::string result;
  while (!at_end() && spend_step()) {
    if (parse_char(stops)) {
      out = std::move(result);
      return true;
    }
    char const c = *it_++;
    bool const escape = c == '\\' && (is_at("\\") || is_at(stops));
    result += escape ? *it_++ : c;
  }
  it_ = start;
  return false;
}

}  // namespace parser
