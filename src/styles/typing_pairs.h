#pragma once

#include "plist/value.h"
#include "text/char_types.h"

#include <vector>

namespace styles {

/// Units that belong together, such as two brackets.
struct unit_pair {
  text::char_t open, close;
};

/// From an array of arrays of two strings; those of longer strings are left out.
std::vector<unit_pair> pairs_of(plist::value const& list);
/// What settings of a scope say under a key such as "highlightPairs", or else the pairs of all
/// texts.
std::vector<unit_pair> pairs_of_settings(plist::value const& settings, char const* key);

}  // namespace styles
