#pragma once

#include "platform/event.h"
#include "platform/menu.h"
#include "platform/responder.h"

#include <string_view>
#include <vector>

namespace platform {

/// The end of every responder chain, and the owner of the menus.
class application_delegate : public responder {
 public:
  virtual void didFinishLaunching() = 0;
  /// The user or the session asks to quit; false keeps the program running.
  virtual bool applicationShouldTerminate() = 0;
  /// The program is about to end and nothing can be asked any more: a signal has come, or the
  /// display is gone. Keeps what isn't saved for the next start; false if some of it is lost. When
  /// the display is gone this is called from exit(), with what was waited for still on the stack.
  /// So static objects that are made at their first use and are used here, which means in all
  /// floors up to documents/, are never destroyed: `static auto& instance = *new type;`.
  virtual bool applicationMustTerminate() = 0;
  /// The user turns to this program, or to another one.
  virtual void applicationDidBecomeActive() {}
  virtual void applicationWillResignActive() {}
  /// Looked at before any other road of a key press; true swallows the event.
  virtual bool shouldSwallowEvent(key_event const& event) = 0;

  /// The menu bar: one item for each menu.
  virtual std::vector<menu_item> mainMenu() const = 0;
  /// The menu that a click on a part of the status bar opens; `part` is the key under which its
  /// value is published (window.h). Empty where a click does nothing.
  virtual std::vector<menu_item> statusMenu(std::string_view part) const = 0;
  /// The present items of a dynamic menu.
  virtual std::vector<menu_item> dynamicItems(std::string_view name) const = 0;
};

}  // namespace platform
