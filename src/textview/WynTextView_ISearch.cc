#include "platform/utf.h"
#include "search/view_find.h"
#include "text/views/view.h"
#include "textview/WynTextView.h"
#include "textview/isearch/WynISearchWindow.h"
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
  // What a macro has of it.
  addMethod("selectMatch:", [this](plist::value const& what) {
    return plist::value(selectMatch(unicode::to_utf16(what["findString"].string_or("")),
                                    what["backward"].boolean_or(false),
                                    what["further"].boolean_or(false)));
  });
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
  return selectIncrementalMatch(false, further);
}

bool WynTextView::findPreviousIncrementalSearchString(bool further) {
  return selectIncrementalMatch(true, further);
}

bool WynTextView::selectIncrementalMatch(bool backward, bool further) {
  if (view_ == nullptr || iSearchWindow_ == nullptr) return false;
  std::u16string const string = iSearchWindow_->incrementalSearchString();
  if (!selectMatch(string, backward, further)) return false;
  recordMacroCommand("selectMatch:", plist::dictionary{{"findString", unicode::to_utf8(string)},
                                                       {"backward", backward},
                                                       {"further", further}});
  return true;
}

bool WynTextView::selectMatch(std::u16string const& string, bool backward, bool further) {
  if (view_ == nullptr || string.empty()) return false;
  auto* const find = backward ? &search::find_backward : &search::find_forward;
  text::iterator const at = find(view_, string, further);
  if (at == view_->storage->end(-1)) return false;
  textview::view_will_change const scope(*this, true);
  view_->selection.set_caret(view_->in_view(at));
  view_->selection.select_to(view_->in_view(at + static_cast<std::ptrdiff_t>(string.size())),
                             false);
  view_->center_selection_pending = true;
  return true;
}
