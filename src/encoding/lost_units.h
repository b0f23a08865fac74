#pragma once

#include "encoding/charset.h"

namespace encoding {

/// The first unit in [first, last) that would be another one after encoding the text in this
/// charset and decoding it again; last if none. UTF-8 and UTF-16 lose no unit. Line ends don't
/// matter. For a text in parts ask for each of them.
char16_t const* first_lost_unit(char16_t const* first, char16_t const* last, charset_t charset);

}  // namespace encoding
