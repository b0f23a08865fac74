#pragma once

#include "text/views/line_marks.h"
#include "text/views/view.h"

namespace text {

/// Keeps the bookmarks of a view with the text that they mark. It changes no coordinates, and it
/// stands below what hides or wraps lines, so its lines are those of the storage.
class view::bookmark_filter : public filter {
 public:
  using filter::did_insert;
  using filter::will_erase;

  /// A bookmark that the line has already stays where it is.
  void set_bookmark(text::pos const& at, bool set);
  bool has_bookmark(size_t line) const { return marks.contains(line); }
  /// The first one after `line`, else the first of all, else column 0 of `line`.
  text::pos next_bookmark(size_t line) const;
  /// The last one before `line`, else the last of all, else column 0 of `line`.
  text::pos previous_bookmark(size_t line) const;

  void did_insert(text::pos const& first, text::pos const& last) override;
  void will_erase(text::pos const& first, text::pos const& last) override;

  void will_replace(text::replacement const& what) override;
  void did_replace(text::replacement const& what) override;

  line_marks marks;

 private:
  bool replacing_ = false;
};

}  // namespace text
