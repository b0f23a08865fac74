#pragma once

#include "platform/event.h"
#include "plist/value.h"

#include <string>
#include <string_view>

namespace keys {

/// What key bindings need of the text view in which a key was pressed.
class key_binding_target {
 public:
  virtual ~key_binding_target() = default;

  /// Performs the action on the view or the first responder after it that knows it; false if none
  /// knows it.
  virtual bool tryToPerformWith(std::string_view selector, plist::value const& object) = 0;
  virtual void insertText(plist::value const& text) = 0;
  /// Keys have been pressed that begin a binding of several; empty when none are pending any more.
  virtual void showPendingKeys(std::string const& keys) = 0;
  /// Hands a key without a binding to the platform's text input.
  virtual void interpretKeyEvents(platform::key_event const& event) = 0;
};

}  // namespace keys
