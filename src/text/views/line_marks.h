#pragma once

#include <optional>
#include <vector>

#include "text/pos.h"

namespace text {

/// Places in a text, at most one a line, that move with it. They lie in two parts, above and below
/// the last edit, and the lower part moves as one: an edit costs as many steps as there are places
/// between it and the edit before it.
class line_marks {
 public:
  bool empty() const { return above_.empty() && below_.empty(); }
  bool contains(size_t line) const { return find(line).has_value(); }
  /// The one on a line.
  std::optional<pos> find(size_t line) const;
  /// The first one on a line after `line`, or the last one on a line before it.
  std::optional<pos> next(size_t line) const;
  std::optional<pos> previous(size_t line) const;
  /// All, in order.
  std::vector<pos> list() const;

  /// A mark that the line has already stays where it is.
  void set(pos at);
  void remove(size_t line);
  void clear();

  /// Text was inserted between two places; marks at the first one stay.
  void did_insert(pos first, pos last);
  /// Text goes; marks in it go to its start, and of those that come to stand on one line the first
  /// stays.
  void did_erase(pos first, pos last);

 private:
  using list_type = std::vector<pos>;

  pos actual(pos below) const { return {size_t{below.line} + moved_, below.column}; }
  pos stored(pos at) const { return {size_t{at.line} - moved_, at.column}; }
  void move_gap(pos after);
  pos* on_line(size_t line);

  list_type above_;
  list_type below_;     ///< the last one first; their lines lack `moved_`
  uint32_t moved_ = 0;  ///< wraps round
};

}  // namespace text
