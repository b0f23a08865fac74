#pragma once

#include "platform/event.h"
#include "textview/isearch/isearch_view.h"

#include <string>
#include <string_view>

/// An incremental search under way: the string that has been typed, shown in the status bar. The
/// text view owns it and hands it the keys; it ends itself by closing. Main thread only.
class WynISearchWindow {
 public:
  WynISearchWindow(textview::isearch_view& view, bool backward)
      : view_(view), backward_(backward) {}

  std::u16string const& incrementalSearchString() const { return string_; }
  /// Goes to the nearest match of the new string.
  void setIncrementalSearchString(std::u16string string);
  /// What was typed goes to the string.
  void insertText(std::u16string_view text);
  /// Destroys this object.
  void cleanupAndClose();
  /// False if the key is for the text view, for which the search has ended. May destroy this
  /// object.
  bool sendEvent(platform::key_event const& event);
  void publish(bool found) const;

 private:
  void search(bool backward, bool further);

  textview::isearch_view& view_;
  bool backward_;
  std::u16string string_;
};
