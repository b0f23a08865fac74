#include "app/batch_item.h"

#include "bundles/BundleManager.h"
#include "textview/WynTextView.h"

namespace app {

std::shared_ptr<BundleItem> item_for_batch(std::string const& name, WynTextView const& view,
                                           std::string& error) {
  auto& manager = BundleManager::sharedInstance();
  if (auto const item = manager.bundleItemForUUID(name)) return item;
  BundleManager::item_list named;
  for (auto const& item :
       manager.bundleItemsOfKinds({bundles::item_kind::command, bundles::item_kind::macro,
                                   bundles::item_kind::snippet, bundles::item_kind::language}))
    if (item->name() == name) named.push_back(item);
  if (named.empty()) {
    error = "no item has this name";
    return nullptr;
  }
  // A text from a pipe is in no language.
  if (named.size() == 1 && view.scopeAtCaret().empty()) return named.front();
  auto const fitting = manager.filterItemsInScope(named, view.scopeAtCaret());
  if (fitting.size() == 1) return fitting.front();
  error = fitting.empty() ? "it is not for the text at the caret"
                          : "several items have this name; a UUID tells which one";
  return nullptr;
}

}  // namespace app
