#pragma once

#include "platform/menu.h"

#include <string_view>
#include <vector>

class WynTextView;

namespace app {

/// Lets the user pick, by letters of its title, one of the `items`, and performs it. `list` is
/// "languages" or "encodings". `view` must show a document.
void select_from_list(std::string_view list, std::vector<platform::menu_item> items,
                      WynTextView& view);

}  // namespace app
