#pragma once

#include "plist/value.h"

#include <string>
#include <vector>

namespace platform {

/// One entry of a menu. Menus are data: they come from property lists in share/.
///
///     { title = 'Undo'; selector = 'undo:'; key = '@z'; mnemonic = 'U'; }
///     { separator = 1; }
///     { title = 'Encoding'; items = ( ... ); }
///     { title = 'UTF-8'; selector = 'takeEncodingFrom:'; argument = 1; exclusive = 1; }
///     { title = 'Recent Files'; dynamic = 'recentFiles'; }
struct menu_item {
  std::string title;
  std::string selector;   // empty for a submenu
  std::string key;        // key string such as "@z"; empty for none
  std::string trigger;    // what typed before Tab does the same; shown at the right
  plist::value argument;  // handed to the method
  bool separator = false;
  bool enabled = true;
  bool checked = false;
  std::string dynamic;  // name of a list that the application fills in when the menu opens
  std::vector<menu_item> items;

  std::string mnemonic;    // the letter of the title that chooses it; empty for any
  bool checkable = false;  // is either checked or not
  bool exclusive = false;  // of it and the entries next to it that are so, one is checked
  /// All keys that perform it, each as key strings pressed one after the other; see
  /// keys/displayed_keys.h.
  std::vector<std::vector<std::string>> keys;
};

/// Reads a menu from its property list: an array of dictionaries with the keys of menu_item.
/// Entries of another shape are skipped.
std::vector<menu_item> menu_from_value(plist::value const& list);

}  // namespace platform
