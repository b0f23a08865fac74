#pragma once

#include <cstddef>
#include <string>

#include "text/char_types.h"

namespace actions {

/// Each line of `text` with its tabs expanded, and then each run of two or more spaces written as
/// tabs as far as there are tab stops in it. The first unit of each line stands at `start_column`;
/// a `tab_size` is not 0.
std::u16string spaces_to_tabs(text::unit_view text, std::size_t tab_size, std::size_t start_column);

}  // namespace actions
