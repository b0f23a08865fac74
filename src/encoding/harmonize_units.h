#pragma once

#include "encoding/line_ending.h"

namespace encoding {

struct harmonized {
  char16_t* last;            ///< the new end of the text
  line_ending::counts ends;  ///< the line ends that were found; each of them is now an LF
};

/// As `harmonize_line_endings`, for units in memory: the same text at about the speed of reading
/// it where all lines end with LF, and that of moving it where they don't.
harmonized harmonize_units(char16_t* first, char16_t* last);

}  // namespace encoding
