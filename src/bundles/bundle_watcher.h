#pragma once

#include <deque>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "platform/file_watcher.h"
#include "platform/run_loop.h"

class BundleManager;

namespace bundles {

/// Watches the folders of bundles while the program runs, and has the manager read what has been
/// added, changed or deleted there, by other programs or in the user's own windows. What it watches
/// grows bit by bit after it was made, so that a start doesn't wait for it. Main thread only.
class bundle_watcher {
 public:
  /// The manager and the present desktop must outlive it.
  explicit bundle_watcher(BundleManager& manager);

 private:
  void look_for_folders();
  void watch_some();
  void note(std::string const& folder);
  void wait_until_quiet();
  void reload();

  BundleManager& manager_;
  platform::run_loop& loop_;
  std::deque<std::string> pending_;
  std::map<std::string, std::unique_ptr<platform::file_watcher::token>> watched_;
  std::set<std::string> changed_;
  std::unique_ptr<platform::timer> watching_, reloading_;
  std::shared_ptr<char> const lives_ = std::make_shared<char>();
};

}  // namespace bundles
