#include "styles/theme_watcher.h"

#include "platform/desktop.h"
#include "styles/WynThemeManager.h"

namespace styles {
namespace {

constexpr double until_quiet = 0.1;  // seconds; folders are reported one by one

}  // namespace

theme_watcher::theme_watcher(WynThemeManager& manager) : manager_(manager) {
  auto& files = platform::desktop::current().files();
  for (std::string const& folder : manager.folders())
    watched_.push_back(files.watch_folder(folder, [this] { reload(); }));
}

void theme_watcher::reload() {
  auto& desktop = platform::desktop::current();
  reloading_ = desktop.loop().schedule(until_quiet, false, [this, &desktop] {
    reloading_.reset();
    // A question on screen may be about the text that is shown.
    desktop.waits().deliver(lives_, [this] { manager_.reloadThemes(); });
  });
}

}  // namespace styles
