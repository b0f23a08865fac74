#pragma once

#include <memory>
#include <vector>

#include "platform/file_watcher.h"
#include "platform/run_loop.h"

class WynThemeManager;

namespace styles {

/// Watches the folders of themes, and has the manager read what has been added, changed or deleted
/// there. Main thread only.
class theme_watcher {
 public:
  /// The manager and the present desktop must outlive it.
  explicit theme_watcher(WynThemeManager& manager);

 private:
  void reload();

  WynThemeManager& manager_;
  std::vector<std::unique_ptr<platform::file_watcher::token>> watched_;
  std::unique_ptr<platform::timer> reloading_;
  std::shared_ptr<char> const lives_ = std::make_shared<char>();
};

}  // namespace styles
