#pragma once

#include "text/line_place.h"

#include <optional>
#include <string_view>

namespace app {

/// Reads LINE or LINE:COLUMN. Nothing when `text` is neither, or counts from 0. Blanks around it
/// don't matter.
std::optional<text::line_place> parse_line_place(std::string_view text);

}  // namespace app
