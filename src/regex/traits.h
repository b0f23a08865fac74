#pragma once

#include <array>
#include <cstdint>
#include <type_traits>

#include "platform/unicode.h"
#include "regex/word_characters.h"

namespace regex {

/// One code unit of a pattern or a text, whatever their types are.
using unit_t = char16_t;

/// The value of a unit; a byte from 128 on is not negative.
template <class T>
constexpr unit_t to_unit(T c) {
  static_assert(sizeof(T) <= sizeof(unit_t), "a code unit has 8 or 16 bits");
  return static_cast<unit_t>(static_cast<std::make_unsigned_t<T>>(c));
}

constexpr unit_t to_unit(char16_t c) {
  return c;
}

/// The classes of units that a pattern can name.
enum class unit_class : std::uint8_t {
  alnum,
  alpha,
  blank,
  digit,
  lower,
  space,
  upper,
  word,
  xdigit,
  any
};

namespace detail {

constexpr bool between(unsigned c, char low, char high) {
  return static_cast<unsigned char>(low) <= c && c <= static_cast<unsigned char>(high);
}

/// The classes of a unit below 128 in the C locale, one bit for each `unit_class`.
constexpr std::uint16_t classes_of_ascii(unsigned c) {
  bool const lower = between(c, 'a', 'z'), upper = between(c, 'A', 'Z'),
             digit = between(c, '0', '9');
  bool const alpha = lower || upper, alnum = alpha || digit;
  bool const xdigit = digit || between(c, 'a', 'f') || between(c, 'A', 'F');
  bool const blank = c == ' ' || c == '\t';
  bool const space = blank || c == '\v' || c == '\f' || c == '\r';  // a line feed is no space
  bool const in_class[] = {alnum, alpha, blank, digit, lower, space, upper, alnum, xdigit, true};
  std::uint16_t bits = 0;
  for (unsigned i = 0; i < std::size(in_class); ++i) bits |= in_class[i] << i;
  return bits;
}

inline constexpr auto ascii_classes = [] {
  std::array<std::uint16_t, 128> table{};
  for (unsigned c = 0; c < table.size(); ++c) table[c] = classes_of_ascii(c);
  return table;
}();

/// As `traits::is`, for a UTF-16 unit from 128 on.
bool is_in_class_beyond_ascii(unit_class which, unit_t u);

}  // namespace detail

/// Classification and case of single code units. Below 128 that of the C locale, whatever the
/// locale of the process is. From 128 on a 16-bit unit goes by the Unicode database; a byte is part
/// of a longer sequence there, belongs to no class and has no case. Any thread.
template <class T>
struct traits {
  static constexpr bool is_wide = sizeof(T) > 1;

  /// Every unit is in the class `any`.
  static bool is(unit_class which, T c) {
    unit_t const u = to_unit(c);
    if (u < 128 && (detail::ascii_classes[u] >> static_cast<unsigned>(which) & 1) != 0) return true;
    if (which == unit_class::word && WynWordCharacters::shared().isWordCharacter(u)) return true;
    if (u < 128) return false;
    return which == unit_class::any || (is_wide && detail::is_in_class_beyond_ascii(which, u));
  }

  static bool is_lower(T c) { return is(unit_class::lower, c); }
  static bool is_upper(T c) { return is(unit_class::upper, c); }
  static bool is_alpha(T c) { return is(unit_class::alpha, c); }
  static bool is_digit(T c) { return is(unit_class::digit, c); }
  static bool is_xdigit(T c) { return is(unit_class::xdigit, c); }
  static bool is_alnum(T c) { return is(unit_class::alnum, c); }
  static bool is_blank(T c) { return is(unit_class::blank, c); }
  /// White space, but not the line feed.
  static bool is_space(T c) { return is(unit_class::space, c); }
  /// Letters, digits and what the user counts among the word characters.
  static bool is_word(T c) { return is(unit_class::word, c); }

  /// The other case where that is a single unit, else `c` itself.
  static T to_lower(T c) {
    unit_t const u = to_unit(c);
    if (u < 128) return detail::between(u, 'A', 'Z') ? static_cast<T>(u + 32) : c;
    return is_wide && unicode::is_upper(u) ? static_cast<T>(unicode::to_lower(u)) : c;
  }

  static T to_upper(T c) {
    unit_t const u = to_unit(c);
    if (u < 128) return detail::between(u, 'a', 'z') ? static_cast<T>(u - 32) : c;
    return is_wide ? static_cast<T>(unicode::to_upper(u)) : c;
  }

  static bool equal_nocase(T a, T b) { return a == b || to_lower(a) == to_lower(b); }
};

}  // namespace regex
