#include "app/key_report.h"

#include "bundles/BundleManager.h"
#include "grammar/scope_selector.h"
#include "keys/WynKeyBindingManager.h"
#include "keys/WynKeyEvent.h"
#include "keys/key_strings.h"
#include "textview/WynTextView.h"

#include <algorithm>
#include <cstdio>

namespace {

std::string item_line(BundleItem const& item, std::vector<std::string> const& scopes) {
  Bundle const* const bundle = item.bundle();
  std::string const& selector = item.scopeSelector();
  std::string result = "  " + item.kind() + " \u201c" + item.name() + "\u201d of bundle \u201c" +
                       (bundle == nullptr ? "" : bundle->name()) + "\u201d, ";
  if (selector.empty()) return result + "everywhere, score 0\n";
  double const score = scope::new_score_for_selector(selector, scopes);
  if (score <= -0.5) return result + "for " + selector + ": not here\n";
  char number[32];
  std::snprintf(number, sizeof number, "%.3g", score);
  return result + "for " + selector + ", score " + number + "\n";
}

std::string binding_text(plist::value const& binding) {
  if (auto const* const action = binding.as_string()) return *action;
  if (binding.as_dictionary()) return "waits for another key";
  std::string result;
  for (plist::value const& step : binding.elements())
    result += (result.empty() ? "" : ", ") + step.string_or("");
  return result;
}

platform::menu_item const* entry_with_key(std::vector<platform::menu_item> const& menus,
                                          std::string const& key, std::string& path) {
  for (platform::menu_item const& item : menus) {
    if (item.key == key && !item.selector.empty()) {
      path = item.title;
      return &item;
    }
    if (auto const* const inner = entry_with_key(item.items, key, path)) {
      path = item.title + " > " + path;
      return inner;
    }
  }
  return nullptr;
}

}  // namespace

std::string key_report(std::string const& key, WynTextView& view,
                       std::vector<platform::menu_item> const& menus) {
  std::string const normal = NormalizeKeyString(key).value_or(key);
  WynKeyEvent event;
  event.initWithString(normal);
  std::string report = "Key " + normal + " (" + event.glyphRepresentation() + ")\n";
  std::vector<std::string> const scopes = view.currentContext();
  report += "Scopes: " + view.scopeAtCaret() + "\n";
  auto& manager = BundleManager::sharedInstance();
  auto const& items = manager.bundleItemsForKeyString(normal);
  auto const winners = manager.filterItemsInScope(items, view.scopeAtCaret());
  if (!items.empty()) report += "Items:\n";
  for (auto const& item : winners) report += item_line(*item, scopes);
  for (auto const& item : items)
    if (std::find(winners.begin(), winners.end(), item) == winners.end())
      report += item_line(*item, scopes);
  if (!winners.empty())
    return report +
           (winners.size() > 1 ? "Result: a menu of these " + std::to_string(winners.size())
                               : "Result: " + winners.front()->name()) +
           "\n";
  auto const& bindings = WynKeyBindingManager::sharedInstance().keyBindings();
  if (auto const found = bindings.find(normal); found != bindings.end())
    return report + "Result: " + binding_text(found->second) + ", by the key bindings\n";
  std::string path;
  if (auto const* const entry = entry_with_key(menus, normal, path))
    return report + "Result: " + entry->selector + ", by the menu " + path + "\n";
  return report + "Result: what the key types, if it types anything\n";
}
