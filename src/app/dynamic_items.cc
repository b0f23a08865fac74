#include "app/dynamic_items.h"

#include "app/recent_files.h"
#include "bundles/BundleManager.h"
#include "bundles/item_menu.h"
#include "commands/WynExecuteCommandManager.h"
#include "path/file_system.h"
#include "path/path.h"
#include "styles/WynThemeManager.h"
#include "styles/wrap_columns.h"
#include "textview/WynTextView.h"

#include <algorithm>

namespace app {
namespace {

std::vector<platform::menu_item> recent_items(recent_files const& recent) {
  std::vector<platform::menu_item> items;
  for (std::string const& path : recent.paths()) {
    platform::menu_item item;
    item.title = path::abbreviate_with_tilde(path);
    item.selector = "openRecentFile:";
    item.argument = plist::data(path.begin(), path.end());
    items.push_back(std::move(item));
  }
  if (items.empty()) return items;
  platform::menu_item separator, clear;
  separator.separator = true;
  clear.title = "Clear Menu";
  clear.selector = "clearRecentFiles:";
  items.push_back(separator);
  items.push_back(clear);
  return items;
}

platform::menu_item item_for(std::string title, char const* selector, plist::value argument) {
  platform::menu_item item;
  item.title = std::move(title);
  item.selector = selector;
  item.argument = std::move(argument);
  return item;
}

// A grammar that says that no file is in its language is there for others to include.
bool is_language_of_files(BundleItem const& grammar) {
  plist::value const entries = grammar.languageEntries();
  auto const* const types = entries["fileTypes"].as_array();
  return types == nullptr || !types->empty() || entries["firstLineMatch"];
}

std::vector<platform::menu_item> language_items() {
  auto languages = BundleManager::sharedInstance().bundleItemsOfKind(bundles::item_kind::language);
  std::stable_sort(languages.begin(), languages.end(), [](auto const& a, auto const& b) {
    return bundles::caseInsensitiveCompare(a->name(), b->name()) < 0;
  });
  std::vector<platform::menu_item> items;
  for (auto const& language : languages)
    if (is_language_of_files(*language))
      items.push_back(item_for(language->name(), "changeLanguageToAndLearn:", language->UUID()));
  return items;
}

std::vector<platform::menu_item> theme_items() {
  std::vector<platform::menu_item> items;
  for (auto const& theme : WynThemeManager::sharedInstance().allThemes())
    items.push_back(item_for(theme.name(), "takeThemeFrom:", theme.uuid()));
  return items;
}

}  // namespace

std::vector<platform::menu_item> dynamic_items(std::string_view name, recent_files const& recent,
                                               WynTextView const* front) {
  if (name == "recentFiles") return recent_items(recent);
  if (name == "languages") return language_items();
  if (name == "themes") return theme_items();
  if (name == "bundles")
    return bundles::bundles_menu(BundleManager::sharedInstance(),
                                 front != nullptr && front->hasSelection());
  if (name == "templates") return bundles::templates_menu(BundleManager::sharedInstance());
  if (name == "fileTemplates") {
    auto bundles = bundles::templates_menu(BundleManager::sharedInstance());
    for (platform::menu_item& bundle : bundles)
      for (platform::menu_item& item : bundle.items) item.selector = "newFileFromTemplate:";
    return bundles;
  }
  if (name == "filterCommands") return WynExecuteCommandManager::historyMenu();
  if (name == "wrapColumns") return wrap_columns::menu_items();
  return {};
}

}  // namespace app
