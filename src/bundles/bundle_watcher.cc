#include "bundles/bundle_watcher.h"

#include <sys/stat.h>

#include "bundles/BundleManager.h"
#include "bundles/files/item_kinds.h"
#include "path/path.h"
#include "path/tree.h"
#include "platform/desktop.h"

namespace bundles {
namespace {

constexpr double first_delay = 1, between = 0.02;  // seconds
constexpr std::size_t at_once = 64;                // folders, less than a millisecond
constexpr double until_quiet = 0.1;                // folders of one bundle are reported one by one

bool is_folder(std::string const& path) {
  struct stat info;
  return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

// A bundle's folder, those of its items, and those of templates.
void add_folders_of(std::string const& bundle, std::set<std::string>& folders) {
  folders.insert(bundle);
  for (kind_row const& kind : item_kinds) {
    std::string const folder = bundle + "/" + std::string(kind.directory);
    if (!is_folder(folder)) continue;
    folders.insert(folder);
    if (kind.kind != item_kind::file_template) continue;
    for (std::string const& name : path::visible_names(folder))
      if (is_folder(folder + "/" + name)) folders.insert(folder + "/" + name);
  }
}

}  // namespace

bundle_watcher::bundle_watcher(BundleManager& manager)
    : manager_(manager), loop_(platform::desktop::current().loop()) {
  watching_ = loop_.schedule(first_delay, false, [this] { look_for_folders(); });
}

void bundle_watcher::look_for_folders() {
  std::set<std::string> folders;
  for (std::string const& path : manager_.folders().bundlePaths()) {
    folders.insert(path);
    for (std::string const& name : path::visible_names(path))
      if (bundles::is_bundle_directory(name)) add_folders_of(path + "/" + name, folders);
  }
  std::erase_if(watched_, [&](auto const& w) { return !folders.contains(w.first); });
  pending_.clear();
  for (std::string const& folder : folders)
    if (!watched_.contains(folder)) pending_.push_back(folder);
  watch_some();
}

void bundle_watcher::watch_some() {
  auto& files = platform::desktop::current().files();
  for (std::size_t n = 0; n < at_once && !pending_.empty(); ++n, pending_.pop_front()) {
    std::string const& folder = pending_.front();
    watched_.emplace(folder, files.watch_folder(folder, [this, folder] { note(folder); }));
  }
  watching_.reset();
  if (!pending_.empty()) watching_ = loop_.schedule(between, false, [this] { watch_some(); });
}

void bundle_watcher::note(std::string const& folder) {
  changed_.insert(folder);
  wait_until_quiet();
}

// A question on screen may be about an item.
void bundle_watcher::wait_until_quiet() {
  reloading_ = loop_.schedule(until_quiet, false, [this] {
    reloading_.reset();
    platform::desktop::current().waits().deliver(lives_, [this] { reload(); });
  });
}

void bundle_watcher::reload() {
  if (changed_.empty()) return;
  if (manager_.currentBundleItem() != nullptr) return wait_until_quiet();  // it runs
  // What has changed in a file doesn't show in the folder's time. A template's folder is an entry
  // of the folder above.
  for (std::string const& folder : changed_)
    for (std::string const& path : {folder, folder + "/info.plist", path::parent(folder)})
      manager_.cache().forgetPath(path);
  changed_.clear();
  manager_.reloadBundles();
  look_for_folders();
}

}  // namespace bundles
