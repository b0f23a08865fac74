#pragma once

#include <string>

#include "text/storage.h"

/// The whole text of a storage.
inline std::u16string units_of(text::storage const& storage) {
  std::u16string text;
  for (size_t line = 0; line < storage.lines(); ++line) {
    if (line != 0) text += u'\n';
    text += storage.line_units(line);
  }
  return text;
}
