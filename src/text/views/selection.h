#pragma once

#include <vector>

#include "text/views/view_iterator.h"

namespace text {

/// A selection of a view: a stretch of text, or a rectangle in column mode. The marks may stand in
/// either order.
class selection {
 public:
  /// Leaves `current_mark` where it is.
  void select(view_iterator first, view_iterator last, bool column_mode);
  /// Moves the caret and the last mark.
  void select_to(view_iterator const& it, bool column_mode);
  void set_caret(view_iterator const& it);

  bool empty() const { return first_mark == last_mark; }
  /// The lesser and the greater mark; `first_mark` for both when they are equal.
  view_iterator const& first() const;
  view_iterator const& last() const;
  /// In columns: of the rectangle, or of the view's screen without one.
  size_t width() const;

  /// The selected text: what copying gives, with one line for each row of a rectangle. It is made
  /// at the first call and good until the selection changes.
  std::vector<char_t>::const_iterator begin() const;
  std::vector<char_t>::const_iterator end() const;
  unit_view units() const;
  /// A copy to keep, without the cached text, which could be as large as the document.
  selection without_text() const;

  /// Compares positions and mode.
  bool operator==(selection const& other) const;

  view_iterator first_mark;
  view_iterator last_mark;
  view_iterator current_mark;  ///< the caret; it may be neither of the two marks
  bool column_mode = false;
  mutable std::vector<char_t> data;  ///< cache of the selected text

 private:
  void copy_data() const;
  void copy_columns() const;
  void copy_range() const;
  void copy_part(view_iterator from, size_t column, view_iterator const& to) const;
};

}  // namespace text
