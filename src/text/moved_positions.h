#pragma once

#include <vector>

#include "text/replacement.h"

namespace text {

/// Where positions stand when many edits have been made. The edits come in order and don't overlap;
/// each is given as it stands before all of those that precede it. A look-up costs the logarithm of
/// their number.
class moved_positions {
 public:
  explicit moved_positions(std::vector<replacement::edit> edits);

  /// What is inserted at the very position stands after it, or before it.
  text::pos staying(text::pos at) const;
  text::pos pushed(text::pos at) const;

 private:
  struct moved_edit {
    text::pos first, last;          ///< before the change
    text::pos new_first, new_last;  ///< when all of them have been made
  };

  static text::pos shifted(text::pos at, moved_edit const& before);

  std::vector<moved_edit> edits_;
};

}  // namespace text
