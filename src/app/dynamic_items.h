#pragma once

#include "platform/menu.h"

#include <string_view>
#include <vector>

class WynTextView;

namespace app {

class recent_files;

/// The items of a menu that is filled when it opens, by the name that share/menus.plist gives it:
/// "languages", "themes" and so on; none for any other name. `front` is the text view of the front
/// window, null if there is none. Main thread only.
std::vector<platform::menu_item> dynamic_items(std::string_view name, recent_files const& recent,
                                               WynTextView const* front);

}  // namespace app
