#pragma once

#include <sstream>

#include "data_rows.h"
#include "encoding/charset.h"

/// How tests/data/encodings.txt writes charsets, bytes and units.
inline encoding::charset_t charset_named(std::string const& name) {
  int charset = encoding::ASCII;
  while (charset < encoding::Unknown && encoding::charset_name[charset] != name) ++charset;
  return static_cast<encoding::charset_t>(charset);
}
inline std::vector<unsigned char> bytes_of(std::string const& text) {
  return {text.begin(), text.end()};
}
inline std::vector<char16_t> units_named(std::string const& hexadecimal) {
  std::istringstream in(hexadecimal);
  std::vector<char16_t> units;
  for (unsigned unit; in >> std::hex >> unit;) units.push_back(static_cast<char16_t>(unit));
  return units;
}
