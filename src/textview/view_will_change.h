#pragma once

#include "platform/region.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

class WynDocument;
class WynTextView;
namespace text {
class view;
}

namespace textview {

/// Brackets everything that the user does to a text view: while it lives, changes of text collect
/// in one undo step (with `group`), and when the outermost one ends, what has to be drawn again is
/// marked, the caret is scrolled into sight and the status bar is updated. The view must show a
/// document; if it is another one at the end, what was begun in the former is ended.
class view_will_change {
 public:
  explicit view_will_change(WynTextView& text_view, bool group = true);
  ~view_will_change();
  view_will_change(view_will_change const&) = delete;
  view_will_change& operator=(view_will_change const&) = delete;

 private:
  std::size_t shown_columns() const;
  bool selection_is_out_of_sight() const;
  bool has_stepped_right() const;
  void end_outermost();
  void show_outcome(bool center, bool outermost);
  void mark_refreshed_lines();
  void mark_guides();
  void mark_moved_selection();
  void scroll_to_selection();
  void drop_left_ranges();

  WynTextView& text_view;
  /// The document is kept, should the text view show another one in between.
  std::shared_ptr<WynDocument> const document;
  text::view& begun_in;
  bool is_seen;  ///< else nothing of what shows is kept up to date
  wyn::region old_region;
  platform::rect old_caret;
  std::vector<platform::rect> other_carets;
  bool had_selection;
  std::size_t guided_line = 0, outline = 0;  ///< the caret's line, and that of its guides
  std::size_t lines = 0, columns = 0;
  std::uint32_t memento = 0;
  bool group;
};

}  // namespace textview
