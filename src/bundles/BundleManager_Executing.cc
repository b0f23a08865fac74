#include "bundles/BundleManager.h"
#include "bundles/bundle_alerts.h"
#include "bundles/item_menu.h"
#include "bundles/item_view.h"
#include "keys/WynKeyEvent.h"

#include <algorithm>
#include <array>

namespace {

struct kind_action {
  bundles::item_kind kind;
  char const* selector;
};

constexpr std::array<kind_action, 5> kind_actions = {{
    {bundles::item_kind::command, "executeCommandWithOptions:"},
    {bundles::item_kind::macro, "playMacroWithOptions:"},
    {bundles::item_kind::snippet, "insertSnippetWithOptions:"},
    {bundles::item_kind::language, "changeLanguageToAndLearn:"},
    {bundles::item_kind::file_template, "newDocumentFromTemplate:"},
}};

/// An item is on the stack for as long as it executes.
class stacked_item {
 public:
  stacked_item(BundleManager& manager, std::shared_ptr<BundleItem> item) : manager_(manager) {
    manager_.pushBundleItem(std::move(item));
  }
  ~stacked_item() { manager_.popBundleItem(); }
  stacked_item(stacked_item const&) = delete;
  stacked_item& operator=(stacked_item const&) = delete;

 private:
  BundleManager& manager_;
};

}  // namespace

bool BundleManager::canExecuteItem(BundleItem const& item, platform::responder* first) {
  auto const action = std::find_if(kind_actions.begin(), kind_actions.end(),
                                   [&](auto const& row) { return row.kind == item.kind(); });
  return action != kind_actions.end() &&
         platform::target_for_selector(first, action->selector) != nullptr;
}

bool BundleManager::executeItem(std::shared_ptr<BundleItem> const& item, platform::responder& first,
                                bool* is_done) {
  stacked_item const on_stack(*this, item);
  bool const has_content = item->kind() != bundles::item_kind::language &&
                           item->kind() != bundles::item_kind::file_template;
  for (auto const& [kind, selector] : kind_actions) {
    platform::responder* const target =
        item->kind() == kind ? platform::target_for_selector(&first, selector) : nullptr;
    if (target == nullptr) continue;
    plist::value const uuid(item->UUID());
    plist::value const result =
        target->performSelectorWithObject(selector, has_content ? item->content() : uuid);
    if (is_done != nullptr) *is_done = result.boolean_or(true);
    return true;
  }
  return false;
}

bool BundleManager::executeItemWithUUID(std::string_view uuid, platform::responder& first) {
  auto const item = bundleItemForUUID(uuid);
  if (item != nullptr) return executeItem(item, first);
  bundles::tell("Bundle Item Not Found",
                "There is no item with the identifier " + bundles::quoted(std::string(uuid)) +
                    " any more: its bundle was changed or removed. Open the menu again to see what "
                    "there is now.");
  return false;
}

std::shared_ptr<BundleItem> BundleManager::chooseItem(item_list const& items,
                                                      bundles::item_view& view, bool at_mouse) {
  if (items.size() < 2) return items.empty() ? nullptr : items.front();
  auto const entries = bundles::menu_for_choice(*this, items, view.hasSelection());
  auto const chosen = view.chooseFromMenu(entries, at_mouse);
  if (!chosen || *chosen >= entries.size()) return nullptr;
  std::int64_t const place = entries[*chosen].argument.integer_or(-1);
  return place < 0 ? nullptr : items[static_cast<std::size_t>(place)];
}

bool BundleManager::executeOneOf(item_list candidates, bundles::item_view& view) {
  platform::responder& first = view.itemResponder();
  std::erase_if(candidates, [&](auto const& item) { return !canExecuteItem(*item, &first); });
  if (candidates.empty()) return false;
  if (auto const item = chooseItem(candidates, view, true)) executeItem(item, first);
  return true;
}

bool BundleManager::shouldSwallowEvent(platform::key_event const& event, bundles::item_view& view) {
  std::string const key = WynKeyEvent::keyEventWithEvent(event).stringRepresentation();
  return !bundleItemsForKeyString(key).empty() &&
         executeOneOf(bundleItemsForKeyString(key, view.scopeAtCaret()), view);
}

bool BundleManager::executeMouseGesture(std::string_view gesture, bundles::item_view& view) {
  return executeOneOf(bundleItemsForMouseGesture(gesture, view.scopeAtCaret()), view);
}
