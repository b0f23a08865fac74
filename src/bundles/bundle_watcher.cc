#include "bundles/bundle_watcher.h"

#include "bundles/BundleManager.h"
#include "path/path.h"
#include "platform/desktop.h"

namespace {

constexpr double delay = 1, reload_delay = 0.2;  // seconds

}  // namespace

bundle_watcher::bundle_watcher(BundleManager& manager) : manager_(manager) {
  timer_ = platform::desktop::current().loop().schedule(delay, false, [this] { watch(); });
}

void bundle_watcher::watch() {
  timer_.reset();
  files_.clear();
  auto& watcher = platform::desktop::current().files();
  for (auto const& item : manager_.bundleItemsOfKinds({"language", "preference"}))
    for (std::string const& path : item->sourcePaths())
      files_.push_back(watcher.watch(path, [this, path] { changed(path); }));
}

// Several files may come together. While a question is on screen, or a command runs, bundles stay
// as they are.
void bundle_watcher::changed(std::string const& path) {
  manager_.cache().invalidateCacheForPath(path::parent(path));
  timer_ = platform::desktop::current().loop().schedule(reload_delay, true, [this] { reload(); });
}

void bundle_watcher::reload() {
  if (platform::desktop::current().is_waiting() || manager_.currentBundleItem() != nullptr) return;
  auto const fired = std::move(timer_);
  manager_.reloadBundles();
  watch();
}
