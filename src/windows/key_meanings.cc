#include "windows/key_meanings.h"

#include "grammar/scope_selector.h"
#include "keys/key_strings.h"
#include "platform/split.h"

#include <algorithm>
#include <cstdio>

namespace windows {
namespace {

bool find_entry(std::vector<platform::menu_item> const& menus, std::string const& key,
                key_meaning& found) {
  for (platform::menu_item const& item : menus) {
    if (!item.selector.empty() && !item.key.empty() &&
        keys::with_capital_for_shift(item.key) == key) {
      found.entry = item;
      return true;
    }
    found.place.push_back(item.title);
    if (find_entry(item.items, key, found)) return true;
    found.place.pop_back();
  }
  return false;
}

std::vector<key_meaning> items_of_key(BundleManager& manager, std::string const& key,
                                      std::string const& scope, platform::responder* first) {
  std::vector<key_meaning> result;
  auto const names = platform::split(scope, ' ');
  auto const best = BundleManager::filterItemsInScope(manager.bundleItemsForKeyString(key), scope);
  for (auto const& item : manager.bundleItemsForKeyString(key)) {
    std::string const& selector = item->scopeSelector();
    key_meaning meaning;
    meaning.item = item;
    if (!selector.empty()) meaning.score = scope::new_score_for_selector(selector, names);
    meaning.can_execute = BundleManager::canExecuteItem(*item, first);
    meaning.is_best =
        meaning.can_execute && std::find(best.begin(), best.end(), item) != best.end();
    result.push_back(std::move(meaning));
  }
  std::stable_sort(result.begin(), result.end(),
                   [](key_meaning const& a, key_meaning const& b) { return a.score > b.score; });
  return result;
}

}  // namespace

std::vector<key_meaning> meanings_of_key(BundleManager& manager, std::string const& key,
                                         std::string const& scope, platform::responder* first,
                                         plist::dictionary const& bindings,
                                         std::vector<platform::menu_item> const& menus) {
  std::vector<key_meaning> result = items_of_key(manager, key, scope, first);
  if (auto const found = bindings.find(key); found != bindings.end()) {
    key_meaning meaning;
    meaning.binding = found->second;
    result.push_back(std::move(meaning));
  }
  key_meaning entry;
  bool const is_on_keypad = key.size() > 1 && key.front() == '#';
  if (find_entry(menus, key, entry) || (is_on_keypad && find_entry(menus, key.substr(1), entry)))
    result.push_back(std::move(entry));
  return result;
}

plist::value bindings_of_next_key(std::vector<key_meaning> const& meanings) {
  auto const is_item = [](key_meaning const& meaning) { return meaning.item != nullptr; };
  auto const after_items = std::find_if_not(meanings.begin(), meanings.end(), is_item);
  bool const executes = std::any_of(meanings.begin(), after_items,
                                    [](key_meaning const& meaning) { return meaning.is_best; });
  bool const waits =
      !executes && after_items != meanings.end() && after_items->binding.as_dictionary() != nullptr;
  return waits ? after_items->binding : plist::value();
}

std::string reason_of_item(key_meaning const& meaning) {
  std::string const& selector = meaning.item->scopeSelector();
  std::string const hindrance = meaning.can_execute ? "" : ", can't be done";
  if (selector.empty()) return "everywhere, score 0" + hindrance;
  if (meaning.score <= -0.5) return "for " + selector + ": not here";
  char number[32];
  std::snprintf(number, sizeof number, "%.3g", meaning.score);
  return "for " + selector + ", score " + number + hindrance;
}

}  // namespace windows
