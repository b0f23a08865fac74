#include "textview/item_names.h"

#include "bundles/BundleManager.h"

namespace textview {

std::string name_for_messages(char const* otherwise) {
  BundleItem const* const item = BundleManager::sharedInstance().currentBundleItem();
  if (item == nullptr) return otherwise;
  Bundle const* const bundle = item->bundle();
  return (bundle == nullptr ? "" : bundle->name() + ": ") + item->name();
}

}  // namespace textview
