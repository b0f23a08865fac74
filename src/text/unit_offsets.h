#pragma once

#include "text/storage.h"

namespace text {

/// Translates positions of a storage into offsets from the beginning of the text, a line end
/// counting as one unit, and back. A translation walks over the lines between the position and
/// the one translated last, or an end of the text, whichever is nearest.
class unit_offsets {
 public:
  /// The storage must outlive it.
  explicit unit_offsets(text::storage& storage) : storage_(storage) {}

  size_t offset_of(text::pos at);
  /// An offset after the end of the text stands for that.
  text::iterator position_of(size_t offset);
  /// To be called before each change of the text, with its first line.
  void will_change(size_t line) { go_to_line(line); }

 private:
  void go_to_line(size_t line);
  void go_to_end();
  void step_down() { offset_ += storage_.size(line_++) + 1; }
  void step_up() { offset_ -= storage_.size(--line_) + 1; }

  text::storage& storage_;
  size_t line_ = 0, offset_ = 0;  ///< a line and the offset at which it begins
};

}  // namespace text
