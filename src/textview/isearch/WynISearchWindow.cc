#include "textview/isearch/WynISearchWindow.h"

#include "keys/WynKeyBindingManager.h"
#include "platform/clusters.h"
#include "platform/desktop.h"
#include "platform/utf.h"

namespace {

// Escape, Return, Enter and Tab end the search and do nothing else.
constexpr std::u16string_view closing_keys = u"\x1B\r\x03\t";

}  // namespace

void WynISearchWindow::setIncrementalSearchString(std::u16string string) {
  string_ = std::move(string);
  search(backward_, false);
}

void WynISearchWindow::insertText(std::u16string_view text) {
  setIncrementalSearchString(string_ + std::u16string(text));
}

void WynISearchWindow::cleanupAndClose() {
  view_.closeIncrementalSearchWindow();
}

void WynISearchWindow::publish(bool found) const {
  char const* const label = found ? "Search: " : "Not found: ";
  view_.updateValueForKey(label + unicode::to_utf8(string_), "incrementalSearch");
}

void WynISearchWindow::search(bool backward, bool further) {
  backward_ = backward;
  if (string_.empty()) return publish(true);
  bool const found = backward ? view_.findPreviousIncrementalSearchString(further)
                              : view_.findNextIncrementalSearchString(further);
  if (!found) platform::desktop::current().beep();
  publish(found);
}

bool WynISearchWindow::sendEvent(platform::key_event const& event) {
  auto const selector = WynKeyBindingManager::sharedInstance().selectorForEvent(event);
  if (selector == "ISIM_incrementalSearch:" || selector == "ISIM_reverseIncrementalSearch:") {
    search(selector == "ISIM_reverseIncrementalSearch:", true);
    return true;
  }
  if (selector == "deleteBackward:") {
    setIncrementalSearchString(
        string_.substr(0, unicode::previous_grapheme_break(string_, string_.size())));
    return true;
  }
  bool const closes =
      event.characters.size() == 1 && closing_keys.find(event.characters[0]) != closing_keys.npos;
  // What is bound to something else, such as an arrow key, continues from what was found; so does a
  // key of the menus.
  bool const is_for_view = selector || (event.modifiers & platform::modifier::command) != 0;
  if (!closes && !is_for_view) return false;
  cleanupAndClose();
  return closes;
}
