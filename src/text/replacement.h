#pragma once

#include <vector>

#include "text/pos.h"
#include "text/text_block.h"

namespace text {

/// Ranges of a stretch of text and what takes their places, for `storage::replace`.
struct replacement {
  /// `offset` counts units from the start of the stretch before the change. Ranges come in order
  /// and don't overlap.
  struct range {
    uint32_t offset, erased, inserted;
  };
  using range_list = std::vector<range>;

  /// A range in the coordinates of the storage, as it stands when all ranges after it have been
  /// replaced and none before it. The new text will end at `new_last`.
  struct edit {
    text::pos first, last, new_last;
  };

  /// `inserted` has the new texts of all ranges one after the other; one such text only if it is
  /// the same for all and `repeated`. Throws std::bad_alloc.
  static replacement make(text::pos first, text_slice old_text, range_list ranges,
                          unit_view inserted, bool repeated);
  /// What takes the change back.
  replacement inverse() const;
  /// Costs a look at all of the text.
  std::vector<edit> edits() const;

  text::pos first;  ///< where the stretch begins
  text_slice old_text, new_text;
  range_list ranges;
};

}  // namespace text
