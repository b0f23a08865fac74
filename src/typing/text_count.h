#pragma once

#include "text/char_types.h"

#include <cstddef>
#include <string>

namespace typing {

/// How much a text holds, as people count: a cluster is a character, line ends are none, and a word
/// is a run of word characters.
struct text_count {
  std::size_t lines = 0, characters = 0, words = 0;
  bool operator==(text_count const&) const = default;
};

/// A line that ends the text isn't followed by another, empty one. Takes time in proportion to the
/// text.
text_count count_text(text::unit_view text);

/// "2 lines, 25 characters, 1 word"
std::string described(text_count const& count);

}  // namespace typing
