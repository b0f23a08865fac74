#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/menu.h"
#include "platform/responder.h"
#include "plist/value.h"

namespace windows {

/// Something that the program does by a menu or a key, as lists name it. Texts are UTF-8.
struct program_action {
  struct step {
    std::string selector;
    plist::value argument;
  };

  std::string title;
  std::string place;  ///< the titles of the menus that lead to it; empty without any
  /// Those that perform it, each as key strings pressed one after the other; lists show the first.
  std::vector<std::vector<std::string>> keys;
  std::vector<step> steps;  ///< performed one after the other
  bool enabled = true;
  bool checked = false;

  /// Performs the steps at `first` or those after it; false if none knows one of them.
  bool perform(platform::responder& first) const;
};

/// All entries of the menus, in their order and in the state that `first` and those after it say,
/// then what only keys do, each once and with its keys. Dynamic menus must have been filled in.
std::vector<program_action> program_actions(std::vector<platform::menu_item> menus,
                                            plist::dictionary const& bindings,
                                            platform::responder* first);

/// What a key does that is bound to an action or to several; without steps for a binding that
/// waits for another key.
program_action action_of_binding(plist::value const& binding);
/// Of an entry of a menu; `place` is the titles of the menus that lead to it.
program_action action_of_entry(platform::menu_item entry, std::vector<std::string> const& place,
                               platform::responder* first);

/// A selector as a title: "Move to End of Line" for "moveToEndOfLine:".
std::string title_of_selector(std::string_view selector);

}  // namespace windows
