#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/file_watcher.h"
#include "platform/run_loop.h"

class BundleManager;

/// Has the bundles loaded again when another program changes a grammar or a preference that is
/// loaded. What comes anew is seen by BundleManager::reloadBundles. Main thread only.
class bundle_watcher {
 public:
  /// Begins a moment later: it isn't urgent, and a start is. The manager must outlive it.
  explicit bundle_watcher(BundleManager& manager);

 private:
  void watch();
  void changed(std::string const& path);
  void reload();

  BundleManager& manager_;
  std::vector<std::unique_ptr<platform::file_watcher::token>> files_;
  std::unique_ptr<platform::timer> timer_;
};
