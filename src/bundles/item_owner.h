#pragma once

#include <memory>
#include <string_view>
#include <vector>

class Bundle;
class BundleItem;
class CacheManager;

namespace bundles {

struct bundle_folders;

/// What bundles and their items need of what holds them all: BundleManager, which implements it.
/// It outlives them. Main thread only.
class item_owner {
 public:
  /// Something has changed or was added: look-up tables are made again.
  virtual void setModified(bool modified) = 0;
  virtual CacheManager& cache() = 0;
  virtual bundle_folders const& folders() const = 0;
  /// Null for a UUID that isn't loaded.
  virtual std::shared_ptr<Bundle> bundleForUUID(std::string_view uuid) const = 0;
  virtual std::shared_ptr<BundleItem> bundleItemForUUID(std::string_view uuid) const = 0;
  /// Good until the bundles change.
  virtual std::vector<std::shared_ptr<BundleItem>> const& bundleItemsOfBundle(
      std::string_view uuid) = 0;
  virtual void addBundleItem(std::shared_ptr<BundleItem> item) = 0;

 protected:
  ~item_owner() = default;
};

}  // namespace bundles
