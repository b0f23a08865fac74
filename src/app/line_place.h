#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace app {

/// A place in a text as people name it: LINE or LINE:COLUMN.
struct line_place {
  std::size_t line = 0;    // from 1
  std::size_t column = 0;  // from 1; 0 when none was given
};

/// Nothing when `text` is no such place, or counts from 0. Blanks round it don't matter.
std::optional<line_place> parse_line_place(std::string_view text);

}  // namespace app
