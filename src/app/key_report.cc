#include "app/key_report.h"

#include "keys/WynKeyBindingManager.h"
#include "keys/WynKeyEvent.h"
#include "keys/key_strings.h"
#include "textview/WynTextView.h"
#include "windows/key_meanings.h"

#include <algorithm>

namespace app {
namespace {

constexpr std::string_view modifier_letters = "#^~$@";

/// The keys of a text such as "^x ^u", of which each but the last is followed by a blank. What is
/// no key string stands for itself.
std::vector<std::string> keys_in(std::string_view text) {
  std::vector<std::string> found;
  while (!text.empty()) {
    std::size_t const key = std::min(text.find_first_not_of(modifier_letters), text.size());
    // A blank may be the key itself.
    std::size_t const blank = text.find(' ', std::min(key + 1, text.size()));
    auto const normal = keys::NormalizeKeyString(text.substr(0, blank));
    if (!normal || blank == text.npos || blank + 1 == text.size()) {
      found.push_back(keys::NormalizeKeyString(text).value_or(std::string(text)));
      break;
    }
    found.push_back(*normal);
    text.remove_prefix(blank + 1);
  }
  return found;
}

std::string glyphs_of(std::string const& key) {
  WynKeyEvent event;
  event.initWithString(key);
  return event.glyphRepresentation();
}

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

/// The items of a key, and what a press of it comes to.
std::string text_of(std::vector<windows::key_meaning> const& meanings, bool is_pending_escape) {
  std::vector<BundleItem const*> winners;
  std::string items, other;
  for (windows::key_meaning const& meaning : meanings) {
    if (meaning.item != nullptr) items += item_line(meaning);
    if (meaning.is_best) winners.push_back(meaning.item.get());
    if (meaning.item != nullptr || !other.empty()) continue;
    if (meaning.binding)
      other = binding_text(meaning.binding) + ", by the key bindings";
    else if (!is_pending_escape)
      other = entry_text(meaning);
  }
  if (!items.empty()) items = "Items:\n" + items;
  if (winners.size() > 1)
    return items + "Result: a menu of these " + std::to_string(winners.size()) + "\n";
  if (!winners.empty()) return items + "Result: " + winners.front()->name() + "\n";
  if (other.empty() && is_pending_escape) other = "the keys before it are forgotten";
  if (other.empty()) other = "what the key types, if it types anything";
  return items + "Result: " + other + "\n";
}

}  // namespace

std::string key_report(std::string const& key, WynTextView& view,
                       std::vector<platform::menu_item> const& menus) {
  auto const pressed = keys_in(key);
  plist::value bindings;  // after the first key
  std::string written, shown, result;
  for (std::size_t n = 0; n < pressed.size(); ++n) {
    written += (n == 0 ? "" : " ") + pressed[n];
    shown += (n == 0 ? "" : " ") + glyphs_of(pressed[n]);
    auto const meanings = windows::meanings_of_key(
        BundleManager::sharedInstance(), pressed[n], view.scopeAtCaret(), &view,
        n == 0 ? WynKeyBindingManager::sharedInstance().keyBindings() : bindings.entries(), menus);
    result = text_of(meanings, n > 0 && pressed[n] == "\x1b");
    bindings = windows::bindings_of_next_key(meanings);
    if (n + 1 == pressed.size() || bindings) continue;
    result += "The keys after " + written + " are no part of it.\n";
    break;
  }
  return "Key " + written + " (" + shown + ")\nScopes: " + view.scopeAtCaret() + "\n" + result;
}

}  // namespace app
