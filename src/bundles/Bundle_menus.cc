#include "bundles/Bundle.h"
#include "bundles/BundleItem.h"
#include "bundles/files/item_file.h"

#include <set>

namespace {

using names = std::set<std::string, std::less<>>;

/// How deep groups may stand in each other; those further in are empty.
constexpr int max_depth = 100;

/// The texts of the array that may stand in a menu; each UUID takes itself off `allowed`. A group's
/// own items are filtered where the group stands.
plist::array filterArray(plist::value const& items, names& allowed, plist::dictionary& groups,
                         int depth = 0) {
  plist::array result;
  for (plist::value const& element : items.elements()) {
    auto const* const uuid = element.as_string();
    if (uuid == nullptr) continue;
    if (*uuid == bundles::menu_separator) {
      result.push_back(element);
      continue;
    }
    if (allowed.erase(*uuid) == 0) continue;
    result.push_back(element);
    auto const group = groups.find(*uuid);
    if (group == groups.end()) continue;
    if (depth == max_depth) {
      group->second = plist::dictionary();
      continue;
    }
    plist::dictionary entries = group->second.entries();
    entries.insert_or_assign("items", filterArray(entries["items"], allowed, groups, depth + 1));
    group->second = std::move(entries);
  }
  return result;
}

}  // namespace

plist::value Bundle::menuStructure() {
  if (mainMenu_) return mainMenu_;
  plist::value const menu = content()["mainMenu"];
  plist::dictionary groups = menu["submenus"].entries();
  plist::array items = menu["items"].elements();
  for (auto const& [uuid, group] : groups) items.push_back(uuid);
  for (std::string const& uuid : ordering()) items.push_back(uuid);
  names allowed;
  for (auto const& item : bundleItems()) {
    bool const in_menus = item->kind() == bundles::item_kind::command ||
                          item->kind() == bundles::item_kind::macro ||
                          item->kind() == bundles::item_kind::snippet;
    if (!in_menus) continue;
    items.push_back(item->UUID());
    allowed.insert(item->UUID());
  }
  for (auto const& [uuid, group] : groups) allowed.insert(uuid);
  plist::array excluded;
  for (plist::value const& uuid : menu["excludedItems"].elements())
    if (uuid.as_string() && allowed.erase(*uuid.as_string()) != 0) excluded.push_back(uuid);

  plist::dictionary result = menu.entries();
  result.insert_or_assign("items", filterArray(items, allowed, groups));
  result.insert_or_assign("excludedItems", std::move(excluded));
  result.insert_or_assign("submenus", std::move(groups));
  mainMenu_ = std::move(result);
  return mainMenu_;
}

void Bundle::setMenuStructure(plist::value const& menu) {
  if (menu == menuStructure()) return;
  setContentValue("mainMenu", menu);
  mainMenu_ = {};
  setModified(true);
}

std::vector<std::string> Bundle::flatMenu() {
  std::vector<std::string> result;
  plist::value const menu = menuStructure();
  for (std::string& uuid : bundles::string_array(menu, "items")) {
    plist::value const& group = menu["submenus"][uuid];
    if (!group.as_dictionary()) {
      result.push_back(std::move(uuid));
      continue;
    }
    result.emplace_back(bundles::menu_separator);
    for (std::string& inner : bundles::string_array(group, "items"))
      result.push_back(std::move(inner));
    result.emplace_back(bundles::menu_separator);
  }
  return result;
}
