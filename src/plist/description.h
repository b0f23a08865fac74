#pragma once

#include <string>

#include "plist/value.h"

namespace plist {

/// The text that stands for a value which has no syntax of its own in the text dialect, and in
/// which numbers become strings: booleans are 1 and 0; reals the shortest digits that read back
/// as the same number; dates "2001-01-01 00:00:00 +0000" (whole seconds, rounded down); data
/// "<0fbd771c 2e>" with four bytes a group. A string is itself, nothing is empty; arrays and
/// dictionaries print as PrettyPrintPList does.
std::string description(value const& v);

}  // namespace plist
