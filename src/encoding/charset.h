#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace encoding {

/// The charsets a file may be in. The value is the index of every table here, and the tag of
/// the menu items that pick an encoding. Those after Unknown are converted by ICU
/// (library_charset.h) and are never guessed.
enum charset_t {
  ASCII,
  UTF8,
  UTF16BE,
  UTF16LE,
  Latin1,
  MacRoman,
  CP1252,
  Unknown,
  GB18030,
  ShiftJIS,
  EUCJP,
  EUCKR,
  Big5,
  KOI8R,
  CP1250,
  CP1251,
  CP1253,
  CP1254,
  CP1255,
  CP1256,
  CP1257,
  ISO8859_2,
  ISO8859_3,
  ISO8859_4,
  ISO8859_5,
  ISO8859_6,
  ISO8859_7,
  ISO8859_8,
  ISO8859_9,
  ISO8859_10,
  ISO8859_11,
  ISO8859_13,
  ISO8859_14,
  ISO8859_15,
  UTF32BE,
  UTF32LE,
  charsets_end
};

/// The number of charsets that have converters of our own: all before Unknown.
inline constexpr std::size_t charset_count = Unknown;

constexpr bool is_of_library(charset_t charset) {
  return charset > Unknown && charset < charsets_end;
}

/// The charset of that number; nothing for Unknown and for any other number.
constexpr std::optional<charset_t> charset_of_number(std::int64_t number) {
  if (number < 0 || number == Unknown || number >= charsets_end) return std::nullopt;
  return static_cast<charset_t>(number);
}

/// What scripts and reports see, by charset_t.
inline constexpr std::array<char const*, charsets_end> charset_name = {"ASCII",
                                                                       "UTF8",
                                                                       "UTF16BE",
                                                                       "UTF16LE",
                                                                       "Latin1",
                                                                       "MacRoman",
                                                                       "CP1252",
                                                                       "Unknown",
                                                                       "GB18030",
                                                                       "Shift JIS",
                                                                       "EUC-JP",
                                                                       "EUC-KR",
                                                                       "Big5",
                                                                       "KOI8-R",
                                                                       "Windows 1250",
                                                                       "Windows 1251",
                                                                       "Windows 1253",
                                                                       "Windows 1254",
                                                                       "Windows 1255",
                                                                       "Windows 1256",
                                                                       "Windows 1257",
                                                                       "ISO 8859-2",
                                                                       "ISO 8859-3",
                                                                       "ISO 8859-4",
                                                                       "ISO 8859-5",
                                                                       "ISO 8859-6",
                                                                       "ISO 8859-7",
                                                                       "ISO 8859-8",
                                                                       "ISO 8859-9",
                                                                       "ISO 8859-10",
                                                                       "ISO 8859-11",
                                                                       "ISO 8859-13",
                                                                       "ISO 8859-14",
                                                                       "ISO 8859-15",
                                                                       "UTF-32 (Big Endian)",
                                                                       "UTF-32 (Little Endian)"};

/// As menus and messages have them.
inline constexpr std::array<char const*, charsets_end> charset_title = {
    "ASCII",
    "UTF-8",
    "UTF-16 (Big Endian)",
    "UTF-16 (Little Endian)",
    "Latin 1",
    "Mac Roman",
    "Windows 1252",
    "Unknown",
    "GB18030 (Simplified Chinese)",
    "Shift JIS (Japanese)",
    "EUC-JP (Japanese)",
    "EUC-KR (Korean)",
    "Big5 (Traditional Chinese)",
    "KOI8-R (Russian)",
    "Windows 1250 (Central European)",
    "Windows 1251 (Cyrillic)",
    "Windows 1253 (Greek)",
    "Windows 1254 (Turkish)",
    "Windows 1255 (Hebrew)",
    "Windows 1256 (Arabic)",
    "Windows 1257 (Baltic)",
    "ISO 8859-2 (Central European)",
    "ISO 8859-3 (South European)",
    "ISO 8859-4 (North European)",
    "ISO 8859-5 (Cyrillic)",
    "ISO 8859-6 (Arabic)",
    "ISO 8859-7 (Greek)",
    "ISO 8859-8 (Hebrew)",
    "ISO 8859-9 (Turkish)",
    "ISO 8859-10 (Nordic)",
    "ISO 8859-11 (Thai)",
    "ISO 8859-13 (Baltic)",
    "ISO 8859-14 (Celtic)",
    "ISO 8859-15 (Western European)",
    "UTF-32 (Big Endian)",
    "UTF-32 (Little Endian)"};

/// What the user defaults store, by charset_t; null where a charset can't be a default.
inline constexpr std::array<char const*, charsets_end> charset_key = {
    nullptr,       "utf-8",       "utf-16-be",   "utf-16-le",   "iso-8859-1", "mac-roman",
    "cp-1252",     nullptr,       "gb18030",     "shift-jis",   "euc-jp",     "euc-kr",
    "big5",        "koi8-r",      "cp-1250",     "cp-1251",     "cp-1253",    "cp-1254",
    "cp-1255",     "cp-1256",     "cp-1257",     "iso-8859-2",  "iso-8859-3", "iso-8859-4",
    "iso-8859-5",  "iso-8859-6",  "iso-8859-7",  "iso-8859-8",  "iso-8859-9", "iso-8859-10",
    "iso-8859-11", "iso-8859-13", "iso-8859-14", "iso-8859-15", "utf-32-be",  "utf-32-le"};

/// The charset that the user defaults name by `key`; nothing for any other text.
std::optional<charset_t> charset_for_key(std::string_view key);

}  // namespace encoding
