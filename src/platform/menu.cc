#include "platform/menu.h"

namespace platform {

std::vector<menu_item> menu_from_value(plist::value const& list) {
  std::vector<menu_item> items;
  for (plist::value const& entry : list.elements()) {
    if (!entry.as_dictionary()) continue;
    menu_item item;
    item.separator = entry["separator"].boolean_or(false);
    item.title = entry["title"].string_or("");
    item.selector = entry["selector"].string_or("");
    item.key = entry["key"].string_or("");
    item.argument = entry["argument"];
    item.dynamic = entry["dynamic"].string_or("");
    item.items = menu_from_value(entry["items"]);
    item.mnemonic = entry["mnemonic"].string_or("");
    item.exclusive = entry["exclusive"].boolean_or(false);
    items.push_back(std::move(item));
  }
  return items;
}

}  // namespace platform
