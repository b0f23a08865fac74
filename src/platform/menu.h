#pragma once

#include "plist/value.h"

#include <string>
#include <vector>

namespace platform {

/// One entry of a menu. Menus are data: they come from property lists in share/.
///
///     { title = 'Undo'; selector = 'undo:'; key = '@z'; }
///     { separator = 1; }
///     { title = 'Encoding'; items = ( ... ); }
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
};

/// Reads a menu from its property list: an array of dictionaries with the keys of menu_item.
/// Entries of another shape are skipped.
std::vector<menu_item> menu_from_value(plist::value const& list);

}  // namespace platform
