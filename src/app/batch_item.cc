#include "app/batch_item.h"

#include "bundles/BundleManager.h"
#include "textview/WynTextView.h"

namespace app {
namespace {

BundleManager::item_list items_named(std::string const& name,
                                     std::vector<bundles::item_kind> const& kinds) {
  auto named = BundleManager::sharedInstance().bundleItemsOfKinds(kinds);
  std::erase_if(named, [&](auto const& item) { return item->name() != name; });
  return named;
}

}  // namespace

std::shared_ptr<BundleItem> item_for_batch(std::string const& name, WynTextView const& view,
                                           std::string& error) {
  if (auto const item = BundleManager::sharedInstance().bundleItemForUUID(name)) return item;
  auto const named = items_named(name, {bundles::item_kind::command, bundles::item_kind::macro,
                                        bundles::item_kind::snippet, bundles::item_kind::language});
  auto const templates = items_named(name, {bundles::item_kind::file_template});
  // A text from a pipe is in no language.
  if (named.size() == 1 && view.scopeAtCaret().empty()) return named.front();
  auto fitting = BundleManager::filterItemsInScope(named, view.scopeAtCaret());
  if (fitting.empty()) fitting = templates;
  if (fitting.size() == 1) return fitting.front();
  error = !fitting.empty() ? "several items have this name; a UUID tells which one"
          : named.empty()  ? "no item has this name"
                           : "it is not for the text at the caret";
  return nullptr;
}

}  // namespace app
