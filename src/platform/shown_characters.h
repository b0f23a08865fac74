#pragma once

#include <string>

namespace platform {

/// Whether a character of a file name can be shown as it is: it is no control character, ends no
/// line, and doesn't turn the direction of what follows it, which would make one name look like
/// another. False for what is no character (-1).
constexpr bool is_shown_as_it_is(int c) {
  bool const turns_direction = c == 0x61C || (0x200E <= c && c <= 0x200F) ||
                               (0x202A <= c && c <= 0x202E) || (0x2066 <= c && c <= 0x2069);
  bool const ends_line = c == 0x2028 || c == 0x2029;
  bool const is_surrogate = 0xD800 <= c && c < 0xE000;
  return c >= 0x20 && !(0x7F <= c && c < 0xA0) && !turns_direction && !ends_line && !is_surrogate;
}

/// A name between the quotation marks of messages.
inline std::string quoted(std::string const& name) {
  return "\u201C" + name + "\u201D";
}

}  // namespace platform
