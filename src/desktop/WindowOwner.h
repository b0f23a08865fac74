#pragma once

#include "desktop/MenuBar.h"
#include "platform/application.h"
#include "platform/window.h"

namespace widgets {

/// What windows need of what holds them all: QtDesktop, which implements it.
class WindowOwner {
 public:
  /// Null while none is run.
  virtual platform::application_delegate* application() const = 0;
  /// The menu bar of all windows.
  virtual menu_items const& main_menu() = 0;
  /// The item of the menu bar that has this key; null if none has.
  virtual platform::menu_item const* item_for_key(platform::key_event const& event) = 0;

  virtual void add(platform::window& window) = 0;
  virtual void remove(platform::window& window) = 0;
  virtual void bring_to_front(platform::window& window) = 0;
  /// It is hidden, and remains until its delegate destroys it.
  virtual void window_closed() = 0;

 protected:
  ~WindowOwner() = default;
};

}  // namespace widgets
