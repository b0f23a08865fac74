#pragma once

#include <cstddef>

#include "text/char_types.h"

namespace text {

/// The first place of `unit` from `first` up to `last`, or `last`. Runs at memory speed.
char_t const* find_unit(char_t const* first, char_t const* last, char_t unit);

/// The first place of `unit`, or of a unit from `bound` on. Runs at memory speed.
char_t const* find_unit_or_above(char_t const* first, char_t const* last, char_t unit,
                                 char_t bound);

/// How often `unit` stands in `units`. Runs at memory speed.
size_t count_unit(unit_view units, char_t unit);

}  // namespace text
