#include "app/AppDelegate.h"
#include "app/link_tool.h"
#include "bundles/BundleManager.h"
#include "keys/WynKeyBindingManager.h"
#include "keys/displayed_keys.h"
#include "path/file_system.h"
#include "platform/desktop.h"
#include "platform/system/library_folders.h"
#include "windows/WynDocumentController.h"
#include "windows/shortcut_list.h"

// What menus show beside what their file says, the Help menu, and what is done to a window
// whatever it shows.

namespace {

// In the source tree it isn't part of share/.
std::string manual() {
  std::string const support = platform::shared_support_folder();
  for (char const* folder : {"/docs/", "/../docs/"})
    if (std::string const file = support + folder + "editing.md"; path::exists(file)) return file;
  return {};
}

// Of an entry of menus that takes no argument; empty if there is none.
std::string key_in(plist::value const& menus, std::string const& selector) {
  for (plist::value const& entry : menus.elements()) {
    if (entry["selector"].string_or("") == selector && !entry["argument"])
      return entry["key"].string_or("");
    if (std::string key = key_in(entry["items"], selector); !key.empty()) return key;
  }
  return {};
}

platform::window* front_window() {
  auto const open = platform::desktop::current().ordered_windows();
  return open.empty() ? nullptr : open.front();
}

}  // namespace

std::vector<platform::menu_item> AppDelegate::menuWithKeys(plist::value const& items) const {
  auto menu = platform::menu_from_value(items);
  for (platform::menu_item& item : menu)
    if (!item.selector.empty() && item.key.empty())
      item.key = key_in(menus_["main"], item.selector);
  keys::add_bound_keys(menu, WynKeyBindingManager::sharedInstance().keyBindings());
  return menu;
}

void AppDelegate::addHelpMethods() {
  auto const add = [this](char const* selector, auto action) {
    addMethod(selector, [action](plist::value const&) {
      action();
      return plist::value();
    });
  };
  add("showKeyboardShortcuts:", [this] { showKeyboardShortcuts(); });
  addMethod("showDocumentation:",
            [this](plist::value const&) { return plist::value(openFile(manual()) != nullptr); });
  addMethod("canShowDocumentation",
            [](plist::value const&) { return plist::value(!manual().empty()); });
  add("linkTerminalTool:", [] { app::offer_link_to_tool(); });
  add("showAbout:", [] {
    platform::desktop::current().alerts().run(
        {"Quirnote " QUIRNOTE_VERSION,
         "A text editor for programmers.\n\n\u00A9 2026 The Quirnote developers. Free software "
         "under the MIT License, without any warranty.",
         {"Close"},
         0,
         false,
         "",
         platform::alert_icon::information});
  });
  add("openMenuBar:", [] {
    if (platform::window* const window = front_window()) window->open_menu_bar();
  });
  add("enterStatusBar:", [] {
    if (platform::window* const window = front_window()) window->enter_status_bar();
  });
  add("toggleFullScreen:", [] {
    if (platform::window* const window = front_window()) window->toggle_full_screen();
  });
  addMethod("toggleFullScreenIsChecked:", [](plist::value const&) {
    platform::window const* const window = front_window();
    return plist::value(window != nullptr && window->is_full_screen());
  });
}

void AppDelegate::showKeyboardShortcuts() {
  platform::window* const window = front_window();
  platform::responder& first = window != nullptr ? *window->first_responder() : *this;
  windows::shortcut_list list(BundleManager::sharedInstance(), menusOfActions(),
                              WynKeyBindingManager::sharedInstance().keyBindings(), first);
  auto const row = platform::desktop::current().pickers().run(list.request(), list);
  if (row && !list.accept(row->row)) platform::desktop::current().beep();
}
