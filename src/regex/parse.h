#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "regex/traits.h"

/// The small steps that the parsers of patterns and of replacement texts share. A fault in a
/// pattern is a programmer's: it is reported on standard error, and parsing continues.
namespace regex {

/// How deep groups may nest in a pattern or a replacement text; deeper ones are read as plain text.
inline constexpr unsigned max_nesting = 256;

/// The unit as UTF-8.
std::string printable(unit_t u);

void report(std::string_view message);
void report_end_of_pattern(std::string_view expected);
/// `inside` is the whole of what was expected, or empty when that is one unit.
void report_unexpected(unit_t expected, std::string_view inside, unit_t got);

/// Consumes `wanted` if it stands at `first`. The position after it, or `first` after a message.
template <class It>
It parse_char(It first, It last, char wanted) {
  if (first == last) {
    report_end_of_pattern(std::string_view(&wanted, 1));
  } else if (to_unit(*first) != to_unit(wanted)) {
    report_unexpected(to_unit(wanted), {}, to_unit(*first));
  } else {
    ++first;
  }
  return first;
}

/// Consumes as much of `wanted` as stands at `first`, with a message if that isn't all.
template <class It>
It parse_string(It first, It last, std::string_view wanted) {
  for (char c : wanted) {
    if (first == last) {
      report_end_of_pattern(wanted);
      return first;
    }
    if (to_unit(*first) != to_unit(c)) {
      report_unexpected(to_unit(c), wanted, to_unit(*first));
      return first;
    }
    ++first;
  }
  return first;
}

template <class It>
bool begins_with(It first, It last, std::string_view text) {
  for (char c : text) {
    if (first == last || to_unit(*first) != to_unit(c)) return false;
    ++first;
  }
  return true;
}

/// Reads decimal digits; `number` stays as it is without any, and stops growing at 10^9.
template <class It>
It parse_number(It first, It last, unsigned& number) {
  constexpr unsigned limit = 1'000'000'000;
  for (unsigned n = 0; first != last && detail::between(to_unit(*first), '0', '9'); ++first) {
    n = n >= limit / 10 ? limit : n * 10 + (to_unit(*first) - u'0');
    number = n;
  }
  return first;
}

/// The value of a digit in any base up to 16, or 16.
constexpr unsigned digit_value(unit_t u) {
  if (detail::between(u, '0', '9')) return u - u'0';
  if (detail::between(u, 'a', 'f')) return u - u'a' + 10;
  if (detail::between(u, 'A', 'F')) return u - u'A' + 10;
  return 16;
}

template <class It>
It parse_digits(It first, It last, unsigned base, unsigned max_count, unit_t& result) {
  unsigned value = 0;
  for (; max_count != 0 && first != last && digit_value(to_unit(*first)) < base; --max_count) {
    value = value * base + digit_value(to_unit(*first++));
  }
  result = static_cast<unit_t>(value);
  return first;
}

/// `first` is after the backslash. Puts the unit that the escape stands for in `result`, and gives
/// the position after it. A backslash at the end stands for itself.
template <class It>
It parse_escape(It first, It last, unit_t& result) {
  static constexpr std::string_view letters = "afnrtve", codes = "\a\f\n\r\t\v\x1b";
  if (first == last) {
    result = u'\\';
    return first;
  }
  unit_t const u = to_unit(*first++);
  if (u == u'0') return parse_digits(first, last, 8, 3, result);
  if (u == u'x') {
    if (!begins_with(first, last, "{")) return parse_digits(first, last, 16, 2, result);
    return parse_char(parse_digits(++first, last, 16, 4, result), last, '}');
  }
  auto const letter = u < 128 ? letters.find(static_cast<char>(u)) : letters.npos;
  result = letter == letters.npos ? u : to_unit(codes[letter]);
  return first;
}

}  // namespace regex
