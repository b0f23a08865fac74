#include "bundles/BundleManager.h"
#include "bundles/bundle_alerts.h"
#include "bundles/files/item_file.h"
#include "bundles/files/item_kinds.h"
#include "path/entries.h"
#include "path/file_system.h"
#include "path/path.h"
#include "path/tree.h"
#include "platform/log.h"
#include "platform/system/rename_to_new.h"
#include "platform/system/trash.h"
#include "platform/system/uuid.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <string_view>

using bundles::quoted;
using bundles::tell;

namespace {

constexpr char const* customizations =
    " is already installed. Would you like to update it?\n"
    "Any customizations you may have done should remain after updating it.";

bool contains(std::vector<std::string> const& list, std::string const& text) {
  return std::find(list.begin(), list.end(), text) != list.end();
}

// Without links on the way, so that one folder has one name.
std::vector<std::string> resolved(std::vector<std::string> paths) {
  for (std::string& path : paths) path = path::resolve(path);
  return paths;
}

bool is_identified(plist::value const& dictionary) {
  auto const* const uuid = dictionary["uuid"].as_string();
  return uuid != nullptr && !uuid->empty() && dictionary["name"].as_string() != nullptr;
}

/// A bundle that is being copied, under a name by which none is loaded, in the folder of those that
/// are installed.
class unfinished_bundle {
 public:
  explicit unfinished_bundle(std::string const& folder) {
    removeLeftOver(folder);
    path_ = folder + "/" + prefix + platform::stringWithUUID();
  }
  unfinished_bundle(unfinished_bundle const&) = delete;
  unfinished_bundle& operator=(unfinished_bundle const&) = delete;
  ~unfinished_bundle() { path::remove_tree(path_); }

  bool copy(std::string const& bundle) { return path::copy_tree(bundle, path_); }
  bool finish(std::string const& target) {
    return platform::rename_to_new(AT_FDCWD, path_.c_str(), target.c_str(),
                                   platform::file_calls::system()) == 0;
  }

 private:
  static constexpr char const* prefix = ".installing-";

  /// Of a program that was killed; what is younger may still be copied.
  static void removeLeftOver(std::string const& folder) {
    constexpr std::time_t old = 3600;  // seconds
    for (dirent const* entry : path::entries(folder)) {
      std::string const path = folder + "/" + entry->d_name;
      struct stat info;
      if (std::string_view(entry->d_name).starts_with(prefix) &&
          ::lstat(path.c_str(), &info) == 0 && info.st_ctime < std::time(nullptr) - old)
        path::remove_tree(path);
    }
  }

  std::string path_;
};

}  // namespace

bool BundleManager::canHandleFile(std::string const& path) {
  if (bundles::is_bundle_directory(path)) {
    installBundle(path);
    return true;
  }
  for (bundles::kind_row const& k : bundles::item_kinds) {
    std::string const extension = bundles::lowercase_extension("x." + std::string(k.extension));
    if (bundles::lowercase_extension(path) != extension) continue;
    // What is in use can't be installed; who opens it wants to change it.
    if (standsOnSearchPath(path) && isLoadedFrom(path)) return false;
    installBundleItemOfKind(path, k.kind);
    return true;
  }
  return false;
}

void BundleManager::installBundle(std::string const& directory) {
  std::string const file = path::name(directory);
  plist::value const info = bundles::read_dictionary(directory + "/info.plist");
  if (!is_identified(info))
    return tell("Bundle is Corrupt",
                "The bundle " + quoted(file) + " does not contain the required " +
                    quoted("info.plist") +
                    " file (or that file is corrupt) and can therefore not be installed.");
  std::string const uuid = *info["uuid"].as_string(), name = *info["name"].as_string();
  if (isHidden(uuid)) showAgain(uuid);
  auto const loaded = bundleForUUID(uuid);
  if (loaded != nullptr && contains(resolved(folders_.bundlePaths()),
                                    path::parent(path::resolve(path::standardize(directory)))))
    return;

  std::string const installed = folders_.PristineCopyBundlePath(true);
  if (loaded != nullptr &&
      !bundles::ask_to_update("Update Bundle", "The bundle " + quoted(name) + customizations))
    return;
  unfinished_bundle unfinished(installed);
  bool const copied = unfinished.copy(directory);
  if (copied && loaded != nullptr) {
    for (std::string const& path : loaded->bundlePaths())
      if (bundles::is_below(path, installed) && platform::move_to_trash(path) != 0)
        return tell("Error Updating Bundle", "Could not delete the existing " + quoted(name) +
                                                 " bundle in " +
                                                 path::abbreviate_with_tilde(installed) + ".");
  }
  auto const target = bundles::UniqueFileInDirectory(installed, name, bundles::bundle_extension);
  bool const done = copied && target && unfinished.finish(*target);
  reloadBundles();
  if (!done)
    tell("Error Installing Bundle", "Could not copy the " + quoted(name) + " bundle to " +
                                        path::abbreviate_with_tilde(installed) + ".");
}

bool BundleManager::standsOnSearchPath(std::string const& path) const {
  std::string const own = path::resolve(path::standardize(path));
  auto const folders = resolved(folders_.bundlePaths());
  return std::any_of(folders.begin(), folders.end(),
                     [&](auto const& folder) { return bundles::is_below(own, folder); });
}

bool BundleManager::isLoadedFrom(std::string const& path) const {
  auto const item = bundleItemForUUID(bundles::read_dictionary(path)["uuid"].string_or(""));
  return item != nullptr &&
         contains(resolved(item->sourcePaths()), path::resolve(path::standardize(path)));
}

bool BundleManager::updateInstalledItem(BundleItem& item) {
  if (!bundles::ask_to_update("Update Bundle Item",
                              "The bundle item " + quoted(item.name()) + customizations))
    return false;
  std::string const installed = folders_.PristineCopyBundlePath();
  for (std::string const& path : item.sourcePaths()) {
    if (!bundles::is_below(path, installed)) continue;
    cache_.invalidateCacheForPath(path::parent(path));
    if (platform::move_to_trash(path) == 0) continue;
    tell("Error Updating Bundle Item", "Could not delete the existing " + quoted(item.name()) +
                                           " bundle item in " +
                                           path::abbreviate_with_tilde(path::parent(path)) + ".");
    return false;
  }
  return true;
}

void BundleManager::installBundleItemOfKind(std::string const& path, bundles::item_kind kind) {
  if (kind == bundles::item_kind::file_template)
    return tell("Installing Template Failed",
                "Sorry, but it is currently not possible to install templates this way. Copy the "
                "template into the folder " +
                    quoted("Templates") + " of a bundle instead.");
  plist::value const content = bundles::read_dictionary(path);
  if (!is_identified(content))
    return tell("Bundle Item is Corrupt",
                "The bundle item " + quoted(path::name(path)) +
                    " does not contain the required information to be installed.");
  std::string const uuid = *content["uuid"].as_string(), name = *content["name"].as_string();
  bool const stands = standsOnSearchPath(path);
  bool const was_hidden = std::any_of(bundles_.begin(), bundles_.end(), [&](auto const& bundle) {
    return contains(bundle->disabled(), uuid) || contains(bundle->deleted(), uuid);
  });
  if (was_hidden) {
    for (auto const& bundle : bundles_) {
      bundle->undeleteUUID(uuid);
      bundle->enableUUID(uuid);
    }
    reloadBundles();
    if (bundleItemForUUID(uuid) != nullptr) {
      platform::log_once("did enable " + name);
      if (stands) return;
    }
  }
  auto const loaded = bundleItemForUUID(uuid);
  if (content["isDelta"].integer_or(0) != 0 && loaded == nullptr)
    return tell("Bundle Item is Incomplete",
                "The bundle item " + quoted(name) +
                    " is holding only the differences against a master version.");
  std::shared_ptr<Bundle> bundle =
      bundleForUUID(loaded ? loaded->bundleUUID() : content["bundleUUID"].string_or(""));
  if (bundle == nullptr) bundle = defaultBundle();
  if (loaded != nullptr && !updateInstalledItem(*loaded)) return;
  // What the new file is installed into must itself be on disk.
  bundle->saveChanges();
  std::string const home = bundle->bundleItemInstallPath();
  std::string const folder = home + "/" + std::string(bundles::KindToDirectory(kind));
  auto const target =
      home.empty() ? std::nullopt
                   : bundles::UniqueFileInDirectory(folder, name, bundles::KindToExtension(kind));
  bool const written = target && bundles::write_dictionary(*target, content.entries());
  reloadBundles();
  if (!written)
    tell("Error Installing Bundle Item", "Could not copy the " + quoted(name) + " bundle item to " +
                                             path::abbreviate_with_tilde(folder) + ".");
}
