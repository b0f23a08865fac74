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

constexpr std::size_t most_symbols_in_menu = 1000;

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

// A menu of a hundred thousand items takes the desktop half a minute, and is not read: those
// around the caret are shown, with how many others there are.
std::vector<platform::menu_item> symbol_items(WynTextView const& view) {
  std::vector<styles::symbol> const& symbols = view.functionPopUp();
  std::size_t first = 0, last = symbols.size();
  if (symbols.size() > most_symbols_in_menu) {
    std::size_t const line = view.view()->selection.current_mark.base.line + std::size_t{1};
    auto const at =
        std::partition_point(symbols.begin(), symbols.end(),
                             [&](styles::symbol const& each) { return each.line <= line; });
    auto const above = static_cast<std::size_t>(at - symbols.begin());
    first = std::min(above - std::min(above, most_symbols_in_menu / 2),
                     symbols.size() - most_symbols_in_menu);
    last = first + most_symbols_in_menu;
  }
  std::vector<platform::menu_item> items;
  auto const add_others = [&](std::size_t count, char const* where) {
    if (count == 0) return;
    items.push_back(item_for(std::to_string(count) + " More " + where, "", {}));
    items.back().enabled = false;
  };
  add_others(first, "Above");
  for (std::size_t i = first; i < last; ++i)
    items.push_back(item_for(symbols[i].name, "goToLineNumber:", symbols[i].line));
  add_others(symbols.size() - last, "Below");
  return items;
}

}  // namespace

std::vector<platform::menu_item> dynamic_items(std::string_view name, recent_files const& recent,
                                               WynTextView const* front) {
  if (name == "recentFiles") return recent_items(recent);
  if (name == "languages") return language_items();
  if (name == "symbols" && front != nullptr) return symbol_items(*front);
  if (name == "themes") return theme_items();
  if (name == "bundles")
    return bundles::bundles_menu(BundleManager::sharedInstance(),
                                 front != nullptr && front->hasSelection());
  if (name == "templates") return bundles::templates_menu(BundleManager::sharedInstance());
  if (name == "filterCommands") return WynExecuteCommandManager::historyMenu();
  if (name == "wrapColumns") return wrap_columns::menu_items();
  return {};
}

}  // namespace app
