#pragma once

#include "documents/WynDocument.h"
#include "headless/headless_desktop.h"
#include "platform/own_defaults.h"
#include "settings/store.h"
#include "test.h"
#include "text/marked_text.h"
#include "textview/WynTextView.h"
#include "textview/view_will_change.h"

/// A text view in a window of the desktop without windows, without a theme: cells are 8 pixels wide
/// and rows 16 high, the text begins at x = 4 and y = 2, and no line is shaded. A test that wants
/// line numbers, or that, sets it afterwards. The desktop must be there before.
struct shown_view {
  explicit shown_view(std::string_view drawing = "|",
                      std::shared_ptr<WynDocument> document = WynDocument::document()) {
    for (char const* key : {"WynTextViewLineNumbersEnabled", "WynTextViewHighlightCurrentLine"})
      settings::store().set(key, false);
    view.setCurrentStyleSheet({});
    view.setDocument(std::move(document));
    set(drawing);
  }

  /// Texts with caret and selection drawn in, see text/marked_text.h.
  void set(std::string_view drawing) {
    textview::view_will_change const scope(view);
    marked_text::set(*view.view(), drawing);
  }
  std::string get() const { return marked_text::get(*view.view()); }
  std::string text() const { return marked_text::text_of(*view.view()->storage); }
  void perform(std::string_view selector, plist::value const& argument = {}) {
    view.performSelectorWithObject(selector, argument);
  }
  platform::menu_item validated(char const* selector, plist::value const& argument = {}) {
    platform::menu_item item;
    item.selector = selector;
    item.argument = argument;
    view.validateMenuItem(item);
    return item;
  }
  void press(std::u16string_view keys) {
    for (char16_t const key : keys) {
      platform::key_event event;
      event.characters = event.characters_ignoring_modifiers = key;
      view.key_down(event);
    }
  }
  void click(platform::point at, int clicks = 1, std::uint32_t modifiers = 0) {
    view.mouse_down({at, platform::mouse_button::left, clicks, modifiers});
    view.mouse_up({at, platform::mouse_button::left, clicks, modifiers});
  }

  WynTextView view;
  headless::headless_view_host host{view};
};

/// A test of one view.
class shown_view_test : public testing::Test {
 private:
  own_defaults const defaults_;

 protected:
  headless::headless_desktop desktop_;
};
