#pragma once

#include "grammar/pattern_cursor.h"

namespace grammar {

/// A class of units in brackets, as far as it was read.
struct bracket_class {
  symbol_set set;
  bool exact = true;            ///< `set` has no ASCII unit that the class doesn't take
  bool beyond_letters = false;  ///< has what may match several units when case is ignored
};

/// Reads the rest of a class, whose opening bracket has been taken, with its closing one. The set
/// is at least what the class takes.
bracket_class read_bracket(pattern_cursor& in, int depth = 0);

}  // namespace grammar
