#pragma once

#include <vector>

#include "text/number_runs.h"
#include "text/replacement.h"

namespace text {

struct storage;

/// One edit made again at many places, none of which reaches into another line, and all of that as
/// one change. Keeps what undo needs and no more: a few words for places that follow a rule, and
/// the units that were erased.
class repetition {
 public:
  /// In order, without overlaps; `erased` has the units of all places one after the other.
  repetition(std::vector<replacement::edit> const& edits, text_block erased, text_block inserted);

  /// These notify the observers of each edit. The second takes back what the first did.
  void apply(text::storage& storage) const;
  void revert(text::storage& storage) const;

  size_t erased_units() const { return erased_.size(); }
  /// Memory held besides the units, in words.
  size_t words() const { return lines_.words() + columns_.words() + lengths_.words(); }

 private:
  struct place {
    text::pos at;
    uint32_t erased;
  };
  std::vector<place> places() const;

  number_runs lines_, columns_, lengths_;
  text_block erased_, inserted_;
};

}  // namespace text
