#include "bundles/BundleManager.h"
#include "bundles/item_menu.h"
#include "bundles/item_view.h"
#include "keys/WynKeyEvent.h"

#include <array>

namespace {

struct kind_action {
  bundles::item_kind kind;
  char const* selector;
};

constexpr std::array<kind_action, 3> kind_actions = {{
    {bundles::item_kind::command, "executeCommandWithOptions:"},
    {bundles::item_kind::macro, "playMacroWithOptions:"},
    {bundles::item_kind::snippet, "insertSnippetWithOptions:"},
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
  if (item.kind() == bundles::item_kind::file_template) return true;
  return platform::target_for_selector(first, "executeCommandWithOptions:") != nullptr ||
         (item.kind() != bundles::item_kind::command &&
          platform::target_for_selector(first, "insertSnippetWithOptions:") != nullptr);
}

bool BundleManager::executeItem(std::shared_ptr<BundleItem> const& item,
                                platform::responder& first) {
  stacked_item const on_stack(*this, item);
  if (item->kind() == bundles::item_kind::language)
    return first.tryToPerformWith("changeLanguageToAndLearn:", item->UUID());
  if (item->kind() == bundles::item_kind::file_template)
    return first.tryToPerformWith("newDocumentFromTemplate:", item->UUID());
  for (auto const& [kind, selector] : kind_actions)
    if (item->kind() == kind) return first.tryToPerformWith(selector, item->content());
  return false;
}

bool BundleManager::executeItemWithUUID(std::string_view uuid, platform::responder& first) {
  auto const item = bundleItemForUUID(uuid);
  return item != nullptr && executeItem(item, first);
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

bool BundleManager::shouldSwallowEvent(platform::key_event const& event, bundles::item_view& view) {
  std::string const key = WynKeyEvent::keyEventWithEvent(event).stringRepresentation();
  if (bundleItemsForKeyString(key).empty()) return false;
  item_list candidates = bundleItemsForKeyString(key, view.scopeAtCaret());
  platform::responder& first = view.itemResponder();
  std::erase_if(candidates, [&](auto const& item) { return !canExecuteItem(*item, &first); });
  if (candidates.empty()) return false;
  if (auto const item = chooseItem(candidates, view, true)) executeItem(item, first);
  return true;
}
