#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>

namespace encoding {

/// What a sequence of bytes becomes that stands for no character.
inline constexpr char16_t replacement_character = 0xFFFD;

/// The units for the bytes 0x80 to 0xFF. No unit occurs twice.
extern std::array<char16_t, 128> const MacRomanToUnicodeTable;

struct CP1252Pair {
  unsigned char byte;
  char16_t unit;
};

/// The bytes 0x80 to 0x9F that are assigned; 0x81, 0x8D, 0x8F, 0x90 and 0x9D are not.
inline constexpr std::size_t CP1252MapSize = 27;
extern std::array<CP1252Pair, CP1252MapSize> const CP1252Map;

using unit_to_byte = std::map<char16_t, unsigned char>;

// Made at the first call and kept for the life of the process.

/// The units for the bytes 0x80 to 0x9F, "?" for the unassigned ones.
std::array<char16_t, 32> const& cp1252_to_unicode();
/// The bytes for the units above 0x7F that MacRoman has.
unit_to_byte const& unicode_to_mac_roman();
/// The bytes for the units above 0xFF that CP1252 has.
unit_to_byte const& unicode_to_cp1252();

}  // namespace encoding
