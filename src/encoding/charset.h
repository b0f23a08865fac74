#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace encoding {

/// The charsets a file may be in. The value is the index of every table here, and the tag of
/// the menu items that pick an encoding.
enum charset_t { ASCII, UTF8, UTF16BE, UTF16LE, Latin1, MacRoman, CP1252, Unknown };

/// The number of charsets in which text can be written: all but Unknown, which is the last.
inline constexpr std::size_t charset_count = Unknown;

/// The charset of that number; nothing for Unknown and for any other number.
constexpr std::optional<charset_t> charset_of_number(std::int64_t number) {
  if (number < 0 || number >= static_cast<std::int64_t>(charset_count)) return std::nullopt;
  return static_cast<charset_t>(number);
}

/// What scripts and reports see, by charset_t.
inline constexpr std::array<char const*, charset_count + 1> charset_name = {
    "ASCII", "UTF8", "UTF16BE", "UTF16LE", "Latin1", "MacRoman", "CP1252", "Unknown"};

/// As menus and messages have them.
inline constexpr std::array<char const*, charset_count + 1> charset_title = {
    "ASCII",   "UTF-8",     "UTF-16 (Big Endian)", "UTF-16 (Little Endian)",
    "Latin 1", "Mac Roman", "Windows 1252",        "Unknown"};

/// What the user defaults store, by charset_t; null where a charset can't be a default.
inline constexpr std::array<char const*, charset_count + 1> charset_key = {
    nullptr, "utf-8", "utf-16-be", "utf-16-le", "iso-8859-1", "mac-roman", "cp-1252", nullptr};

/// The charset that the user defaults name by `key`; nothing for any other text.
std::optional<charset_t> charset_for_key(std::string_view key);

}  // namespace encoding
