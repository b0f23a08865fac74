#include "text/views/view.h"
#include "textview/WynTextView.h"
#include "textview/view_will_change.h"

// Setting bookmarks and going from one to the next.

void WynTextView::addBookmarkMethods() {
  addMethod("toggleCurrentBookmark:", [this](plist::value const&) {
    if (view_ == nullptr) return plist::value(false);
    text::iterator const caret = view_->selection.current_mark.base;
    toggleBookmark(caret.line, caret.column);
    return plist::value();
  });
  addMethod("toggleCurrentBookmarkMenuTitle", [this](plist::value const&) {
    bool const marked =
        view_ != nullptr && view_->has_bookmark(view_->selection.current_mark.base.line);
    return plist::value(marked ? "Remove Bookmark" : "Add Bookmark");
  });
  addAction("goToNextBookmark:", [this] { goToBookmark(&text::view::next_bookmark); });
  addAction("goToPreviousBookmark:", [this] { goToBookmark(&text::view::previous_bookmark); });
}

// The first bookmark may bring the gutter with it, and the last take it away.
void WynTextView::toggleBookmark(std::size_t line, std::size_t column) {
  view_->toggle_bookmark({line, column});
  recalcFrameSize();
  setNeedsDisplay();
}

bool WynTextView::toggleBookmarkAtClick(platform::point p) {
  bool const has_zone = showBookmarksInGutter() && (lineNumbers() || layout_.bookmarkWidth() > 0);
  double const gutter = visibleTextRect().x - layout_.gutterWidth();
  if (!has_zone || p.x >= gutter + bookmarkZone()) return false;
  std::size_t const row = layout_.row_at(p.y);
  if (row >= view_->lines()) return false;
  toggleBookmark(view_->begin(row).base.line, 0);
  return true;
}

void WynTextView::goToBookmark(text::pos (text::view::*find)(std::size_t line) const) {
  text::pos const at = (view_->*find)(view_->selection.current_mark.base.line);
  view_->selection.set_caret(view_->in_view(text::iterator(at, view_->storage)));
  view_->center_selection_pending = true;
}
