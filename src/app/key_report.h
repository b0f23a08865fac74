#pragma once

#include <string>
#include <vector>

#include "platform/menu.h"

class WynTextView;

namespace app {

/// What a key does at a place, and why: the items that it stands for with their scores, the winner
/// first, else the binding, else the menu entry. `key` is a key string such as "@b", or several as
/// in "^x ^u" for what the last one does after the others. The place must exist. Lines of UTF-8.
std::string key_report(std::string const& key, WynTextView& view,
                       std::vector<platform::menu_item> const& menus);

}  // namespace app
