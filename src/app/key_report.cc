#include "app/key_report.h"

#include "keys/WynKeyBindingManager.h"
#include "keys/WynKeyEvent.h"
#include "keys/key_strings.h"
#include "textview/WynTextView.h"
#include "windows/key_meanings.h"

namespace app {
namespace {

std::string item_line(windows::key_meaning const& meaning) {
  BundleItem const& item = *meaning.item;
  Bundle const* const bundle = item.bundle();
  return "  " + std::string(bundles::name_of(item.kind())) + " \u201c" + item.name() +
         "\u201d of bundle \u201c" + (bundle == nullptr ? "" : bundle->name()) + "\u201d, " +
         windows::reason_of_item(meaning) + "\n";
}

std::string binding_text(plist::value const& binding) {
  if (auto const* const action = binding.as_string()) return *action;
  if (binding.as_dictionary()) return "waits for another key";
  std::string result;
  for (plist::value const& step : binding.elements())
    result += (result.empty() ? "" : ", ") + step.string_or("");
  return result;
}

std::string entry_text(windows::key_meaning const& meaning) {
  std::string path;
  for (std::string const& title : meaning.place) path += title + " > ";
  return meaning.entry.selector + ", by the menu " + path + meaning.entry.title;
}

}  // namespace

std::string key_report(std::string const& key, WynTextView& view,
                       std::vector<platform::menu_item> const& menus) {
  std::string const normal = keys::NormalizeKeyString(key).value_or(key);
  WynKeyEvent event;
  event.initWithString(normal);
  std::string report = "Key " + normal + " (" + event.glyphRepresentation() + ")\n";
  report += "Scopes: " + view.scopeAtCaret() + "\n";
  auto const meanings =
      windows::meanings_of_key(BundleManager::sharedInstance(), normal, view.scopeAtCaret(),
                               WynKeyBindingManager::sharedInstance().keyBindings(), menus);
  std::vector<BundleItem const*> winners;
  std::string items, other;
  for (windows::key_meaning const& meaning : meanings) {
    if (meaning.item != nullptr) items += item_line(meaning);
    if (meaning.is_best) winners.push_back(meaning.item.get());
    if (meaning.item != nullptr || !other.empty()) continue;
    other = meaning.binding ? binding_text(meaning.binding) + ", by the key bindings"
                            : entry_text(meaning);
  }
  if (!items.empty()) report += "Items:\n" + items;
  if (winners.size() > 1)
    return report + "Result: a menu of these " + std::to_string(winners.size()) + "\n";
  if (!winners.empty()) return report + "Result: " + winners.front()->name() + "\n";
  if (other.empty()) other = "what the key types, if it types anything";
  return report + "Result: " + other + "\n";
}

}  // namespace app
