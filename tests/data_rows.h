#pragma once

#include "source_tree.h"
#include "test.h"

/// The cases that stand in a file of tests/data, one a line: fields in double quotes or, where they
/// hold no blank, as they are. In quotes "\n", "\t", "\r", "\xHH", "\\" and "\"" are what they are
/// in C++, "\uHHHH" in capitals from 0080 on is the UTF-8 of any unit, and any other backslash
/// stands for itself. Lines that begin with "#" are remarks, and a line "== NAME" begins a section.
using data_row = std::vector<std::string>;

inline data_row fields_of(std::string const& line) {
  data_row fields;
  for (std::size_t at = 0; (at = line.find_first_not_of(' ', at)) != line.npos;) {
    std::string& field = fields.emplace_back();
    if (line[at] != '"') {
      std::size_t const end = std::min(line.find(' ', at), line.size());
      field = line.substr(at, end - at);
      at = end;
      continue;
    }
    for (++at; at < line.size() && line[at] != '"'; ++at) {
      constexpr std::string_view letters = "ntr\\\"", meant = "\n\t\r\\\"";
      auto const letter = line[at] == '\\' ? letters.find(line[at + 1]) : letters.npos;
      if (letter != letters.npos) {
        field += meant[letter];
        ++at;
      } else if (line.compare(at, 2, "\\u") == 0 &&
                 line.find_first_not_of("0123456789ABCDEF", at + 2) >= at + 6) {
        unsigned const unit = std::stoul(line.substr(at + 2, 4), nullptr, 16);
        if (unit >= 0x800) field += static_cast<char>(0xE0 | unit >> 12);
        field += static_cast<char>(unit >= 0x800 ? 0x80 | (unit >> 6 & 0x3F) : 0xC0 | unit >> 6);
        field += static_cast<char>(0x80 | (unit & 0x3F));
        at += 5;
      } else if (line.compare(at, 2, "\\x") == 0) {
        field += static_cast<char>(std::stoi(line.substr(at + 2, 2), nullptr, 16));
        at += 3;
      } else {
        field += line[at];
      }
    }
    ++at;
  }
  return fields;
}

inline std::vector<data_row> data_rows(std::string const& file, std::string const& section) {
  std::ifstream in(test_data(file));
  std::vector<data_row> rows;
  bool is_inside = false;
  for (std::string line; std::getline(in, line);) {
    if (line.starts_with("== "))
      is_inside = line.substr(3) == section;
    else if (is_inside && !line.empty() && line[0] != '#')
      rows.push_back(fields_of(line));
  }
  EXPECT_FALSE(rows.empty()) << section;
  return rows;
}

/// The names of the sections, in their order.
inline strings data_sections(std::string const& file) {
  std::ifstream in(test_data(file));
  strings names;
  for (std::string line; std::getline(in, line);)
    if (line.starts_with("== ")) names.push_back(line.substr(3));
  return names;
}
