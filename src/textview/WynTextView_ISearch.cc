#include "search/view_find.h"
#include "text/views/view.h"
#include "textview/WynISearchWindow.h"
#include "textview/WynTextView.h"
#include "textview/view_will_change.h"

// Incremental search: what is typed is looked for at once.

void WynTextView::addISearchMethods() {
  auto const add = [this](char const* selector, bool backward) {
    addMethod(selector, [this, backward](plist::value const&) {
      if (view_ == nullptr) return plist::value(false);
      openIncrementalSearchWindow(backward);
      return plist::value();
    });
  };
  add("ISIM_incrementalSearch:", false);
  add("ISIM_reverseIncrementalSearch:", true);
}

void WynTextView::openIncrementalSearchWindow(bool backward) {
  closeIncrementalSearchWindow();
  abandonMarkedText();
  iSearchWindow_ = std::make_unique<WynISearchWindow>(*this, backward);
  iSearchWindow_->publish(true);
}

void WynTextView::closeIncrementalSearchWindow() {
  if (iSearchWindow_ == nullptr) return;
  iSearchWindow_.reset();
  updateValueForKey({}, "incrementalSearch");
}

bool WynTextView::findNextIncrementalSearchString(bool further) {
  return selectIncrementalMatch(&search::find_forward, further);
}

bool WynTextView::findPreviousIncrementalSearchString(bool further) {
  return selectIncrementalMatch(&search::find_backward, further);
}

bool WynTextView::selectIncrementalMatch(text::iterator (*find)(text::view*, std::u16string const&,
                                                                bool),
                                         bool further) {
  if (view_ == nullptr || iSearchWindow_ == nullptr) return false;
  std::u16string const string = iSearchWindow_->incrementalSearchString();
  if (string.empty()) return false;
  text::iterator const at = find(view_, string, further);
  if (at == view_->storage->end(-1)) return false;
  textview::view_will_change const scope(*this, true);
  view_->selection.set_caret(view_->in_view(at));
  view_->selection.select_to(view_->in_view(at + static_cast<std::ptrdiff_t>(string.size())),
                             false);
  view_->center_selection_pending = true;
  return true;
}
