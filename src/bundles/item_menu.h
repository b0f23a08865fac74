#pragma once

#include <memory>
#include <vector>

#include "platform/menu.h"

class BundleItem;
class BundleManager;

namespace bundles {

/// The menu in which one of several items is chosen, and the ones of all items of a bundle.

/// What is shown for a choice among items: languages by name; others under the names of their
/// bundles, in the order of their menus. The first ten have the digits as keys. Each entry's
/// argument is the place of its item among `items`; headings and separators have none.
std::vector<platform::menu_item> menu_for_choice(
    BundleManager& manager, std::vector<std::shared_ptr<BundleItem>> const& items,
    bool has_selection);

/// A submenu for each bundle that has commands, macros or snippets; and for templates.
std::vector<platform::menu_item> bundles_menu(BundleManager& manager, bool has_selection);
std::vector<platform::menu_item> templates_menu(BundleManager& manager);

}  // namespace bundles
