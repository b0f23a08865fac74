#include "bundles/Bundle.h"

#include "bundles/BundleItem.h"
#include "bundles/bundle_alerts.h"
#include "bundles/bundle_folders.h"
#include "bundles/files/item_file.h"
#include "bundles/files/item_kinds.h"
#include "bundles/index/CacheManager.h"
#include "bundles/index/bundle_scan.h"
#include "path/file_system.h"
#include "path/path.h"
#include "path/tree.h"
#include "platform/desktop.h"
#include "platform/log.h"
#include "platform/system/uuid.h"
#include "plist/delta.h"

#include <sys/stat.h>

#include <algorithm>
#include <map>
#include <unordered_map>

using bundles::string_array;

namespace {

constexpr char const* info_file = "/info.plist";

bool is_delta(plist::value const& dictionary) {
  return dictionary["isDelta"].integer_or(0) != 0;
}

plist::array strings(std::vector<std::string> const& list) {
  return {list.begin(), list.end()};
}

bool contains(std::vector<std::string> const& list, std::string_view text) {
  return std::find(list.begin(), list.end(), text) != list.end();
}

}  // namespace

std::shared_ptr<Bundle> Bundle::bundleWithName(bundles::item_owner& owner, std::string name) {
  plist::dictionary content{{"name", std::move(name)}, {"uuid", platform::stringWithUUID()}};
  auto bundle = std::make_shared<Bundle>(owner, std::move(content), std::vector<std::string>(),
                                         std::string());
  bundle->setModified(true);
  return bundle;
}

namespace {

struct merged_info {
  plist::value content;  // nothing when there is none
  std::string pristine;
  std::string broken;  // the directory that ended it
};

merged_info merge(CacheManager& cache, std::vector<std::string> const& paths,
                  plist::value (*read)(CacheManager&, std::string const&)) {
  merged_info result;
  plist::array layers;
  for (std::string const& path : paths) {
    plist::value const info = read(cache, path + info_file);
    if (!info) return {{}, {}, path};
    layers.push_back(info);
    result.pristine = path + info_file;
    if (!is_delta(info)) break;
  }
  plist::dictionary merged = plist::MergePLists(layers).entries();
  if (merged.empty()) return {};
  // A whole copy from before menus existed is completed by what it lies on, and is from then on a
  // change of that.
  for (auto path = paths.begin(); !merged.contains("mainMenu") && path != paths.end(); ++path) {
    plist::value const info = read(cache, *path + info_file);
    if (!info) return {{}, {}, *path};
    if (!info["mainMenu"]) continue;
    merged.emplace("mainMenu", info["mainMenu"]);
    if (!is_delta(info)) result.pristine = *path + info_file;
  }
  result.content = std::move(merged);
  return result;
}

}  // namespace

std::shared_ptr<Bundle> Bundle::bundleWithPaths(bundles::item_owner& owner,
                                                std::vector<std::string> paths) {
  merged_info info = merge(owner.cache(), paths, bundles::bundle_head);
  if (!info.broken.empty()) {
    bundles::tell_could_not_load(info.broken);
    // Read again, the folder of bundles doesn't name it any more, and nothing is reported again.
    owner.cache().forgetPath(path::parent(info.broken));
  }
  if (!info.content) return nullptr;
  return std::make_shared<Bundle>(owner, std::move(info.content), std::move(paths),
                                  std::move(info.pristine));
}

Bundle::Bundle(bundles::item_owner& owner, plist::value content, std::vector<std::string> paths,
               std::string pristineCopyPlistPath)
    : BaseItem(owner, content["name"].string_or(""), bundles::item_kind::bundle,
               content["uuid"].string_or("")),
      content_(std::move(content)),
      hasContent_(paths.empty()),
      bundlePaths_(std::move(paths)),
      pristineCopyPlistPath_(std::move(pristineCopyPlistPath)) {}

plist::value const& Bundle::content() const {
  if (hasContent_) return content_;
  hasContent_ = true;
  // Files that have vanished meanwhile leave what is known.
  merged_info info = merge(owner().cache(), bundlePaths_, bundles::bundle_info);
  isLost_ = !info.content;
  if (!isLost_) content_ = std::move(info.content);
  return content_;
}

bool Bundle::canBeSaved() const {
  return !isLost_ && (bundlePaths_.empty() || path::exists(bundlePaths_.front()));
}

void Bundle::setContentValue(std::string_view key, plist::value v) {
  plist::dictionary content = this->content().entries();
  content.insert_or_assign(std::string(key), std::move(v));
  content_ = std::move(content);
}

std::vector<std::string> Bundle::ordering() const {
  return string_array(content(), "ordering");
}

std::vector<std::string> Bundle::disabled() const {
  return string_array(content_, "disabled");
}

std::vector<std::string> Bundle::deleted() const {
  return string_array(content_, "deleted");
}

std::vector<std::shared_ptr<BundleItem>> Bundle::bundleItems() const {
  std::vector<std::shared_ptr<BundleItem>> items = owner().bundleItemsOfBundle(UUID());
  std::map<std::string, std::size_t, std::less<>> places;
  for (std::string& uuid : ordering()) places.emplace(std::move(uuid), places.size());
  auto const place = [&](auto const& item) {
    auto const found = places.find(item->UUID());
    return found == places.end() ? places.size() : found->second;
  };
  std::stable_sort(items.begin(), items.end(),
                   [&](auto const& a, auto const& b) { return place(a) < place(b); });
  return items;
}

std::vector<std::shared_ptr<BundleItem>> Bundle::bundleItemsOfKind(bundles::item_kind kind) const {
  auto items = bundleItems();
  std::erase_if(items, [&](auto const& item) { return item->kind() != kind; });
  return items;
}

std::vector<std::shared_ptr<BundleItem>> Bundle::bundleItemsOnDisk(bundles::item_kind kind) const {
  auto hidden = disabled();
  for (std::string& uuid : deleted()) hidden.push_back(std::move(uuid));
  std::sort(hidden.begin(), hidden.end());
  std::vector<bundles::index::item_stubs> found;
  for (std::string const& path : bundlePaths_)
    found.push_back(bundles::items_in(owner().cache(), path, kind));
  std::vector<std::vector<bundles::BundleItemStub*>>
      stacks;  // of layers, the highest priority first
  std::unordered_map<std::string_view, std::size_t> by_uuid;
  for (auto& stubs : found) {
    for (bundles::BundleItemStub& stub : stubs) {
      if (std::binary_search(hidden.begin(), hidden.end(), stub.keys.uuid)) continue;
      auto const [place, is_new] = by_uuid.emplace(stub.keys.uuid, stacks.size());
      if (is_new) stacks.emplace_back();
      stacks[place->second].push_back(&stub);
    }
  }
  std::vector<std::shared_ptr<BundleItem>> result;
  for (auto const& stack : stacks)
    if (auto item = BundleItem::itemWithStubs(owner(), kind, UUID(), stack))
      result.push_back(std::move(item));
  return result;
}

bool Bundle::isLocal() const {
  return !bundlePaths_.empty() &&
         bundles::is_below(bundlePaths_.front(), owner().folders().LocalBundlePath());
}

bool Bundle::makeLocalPath() {
  auto const path = bundles::UniqueFileInDirectory(owner().folders().LocalBundlePath(true), name(),
                                                   bundles::bundle_extension);
  if (!path || ::mkdir(path->c_str(), 0777) != 0) {
    platform::log_once("error creating bundle path " + path.value_or(name()));
    platform::beep();
    return false;
  }
  bundlePaths_.insert(bundlePaths_.begin(), *path);
  return true;
}

void Bundle::prepareForSaving() {
  setContentValue("name", name());
  setContentValue("uuid", UUID());
}

void Bundle::saveChanges() {
  if (!isModified()) return;
  prepareForSaving();
  if (isLost_) {
    platform::log_once(name() + ": what was changed can't be saved, the bundle has vanished");
    return platform::beep();
  }
  bool const is_delta_file = !pristineCopyPlistPath_.empty() && !bundlePaths_.empty() &&
                             path::parent(pristineCopyPlistPath_) != bundlePaths_.front();
  plist::dictionary written = content().entries();
  if ((is_delta_file || !isLocal()) && !pristineCopyPlistPath_.empty()) {
    plist::value const pristine = bundles::read_dictionary(pristineCopyPlistPath_);
    // Without the layer below there is nothing to be a change of.
    if (pristine) written = plist::DeltaPList(pristine.entries(), written);
  }
  if (!isLocal() && !makeLocalPath()) return;
  if (!bundles::write_dictionary(bundlePaths_.front() + info_file, written))
    return platform::beep();
  setModified(false);
}

std::string Bundle::localPath() {
  if (!isLocal()) {
    setModified(true);
    saveChanges();
  }
  return isLocal() ? bundlePaths_.front() : "";
}

std::string Bundle::bundleItemInstallPath() {
  std::string const installed = owner().folders().PristineCopyBundlePath(true);
  for (std::string const& path : bundlePaths_)
    if (bundles::is_below(path, installed)) return path;
  auto const path = bundles::UniqueFileInDirectory(installed, name(), bundles::bundle_extension);
  if (!path || ::mkdir(path->c_str(), 0777) != 0 ||
      !bundles::write_dictionary(*path + info_file, {{"isDelta", true}, {"uuid", UUID()}}))
    return "";
  bundlePaths_.insert(bundlePaths_.begin() + (isLocal() ? 1 : 0), *path);
  return *path;
}

std::string Bundle::supportPath() const {
  for (std::string const& path : bundlePaths_) {
    std::string support = path + "/" + std::string(bundles::support_directory);
    struct stat info;
    if (::stat(support.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) return support;
  }
  return "";
}

std::string Bundle::writeToDirectory(std::string const& directory) {
  prepareForSaving();
  auto const path = bundles::UniqueFileInDirectory(directory, name(), bundles::bundle_extension);
  if (!path || ::mkdir(path->c_str(), 0777) != 0) return "";
  plist::dictionary written = content().entries();
  for (char const* key : {"isDelta", "deletedKeys"}) written.erase(key);
  bool ok = bundles::write_dictionary(*path + info_file, written);
  for (auto const& item : bundleItems())
    ok = !item->writeToDirectory(*path + "/" + std::string(bundles::KindToDirectory(item->kind())))
              .empty() &&
         ok;
  std::string const support = supportPath();
  if (!support.empty())
    ok =
        path::copy_tree(support, *path + "/" + std::string(bundles::support_directory), true) && ok;
  return ok ? path::name(*path) : "";
}

void Bundle::removeBundleItem(BundleItem& item) {
  auto const sources = item.sourcePaths();
  bool const had_local = item.moveLocalFileToTrash();
  // What lies below would come to light again.
  bool const hides = !sources.empty() && !(sources.size() == 1 && had_local);
  auto list = deleted();
  if (hides && !contains(list, item.UUID())) {
    list.push_back(item.UUID());
    setContentValue("deleted", strings(list));
  }
  removeFromMenus(item.UUID());
  setModified(true);
}

void Bundle::removeFromMenus(std::string const& uuid) {
  auto const without = [&](plist::value const& dictionary, std::string_view key) {
    plist::array kept;
    for (plist::value const& element : dictionary[key].elements())
      if (!(element == plist::value(uuid))) kept.push_back(element);
    return kept;
  };
  if (content()["ordering"]) setContentValue("ordering", without(content(), "ordering"));
  mainMenu_ = {};
  plist::value const menu = content()["mainMenu"];
  if (!menu.as_dictionary()) return;
  plist::dictionary changed = menu.entries();
  for (char const* key : {"items", "excludedItems"})
    if (menu[key]) changed.insert_or_assign(key, without(menu, key));
  plist::dictionary submenus;
  for (auto const& [group, submenu] : menu["submenus"].entries()) {
    plist::dictionary entries = submenu.entries();
    entries.insert_or_assign("items", without(submenu, "items"));
    submenus.emplace(group, std::move(entries));
  }
  if (menu["submenus"]) changed.insert_or_assign("submenus", std::move(submenus));
  setContentValue("mainMenu", std::move(changed));
}

void Bundle::registerBundleItem(BundleItem&) {
  mainMenu_ = {};
}

void Bundle::takeOffList(std::string_view key, std::string_view uuid) {
  auto list = string_array(content_, key);
  if (std::erase(list, uuid) == 0) return;
  setContentValue(key, strings(list));
  mainMenu_ = {};
  setModified(true);
}

void Bundle::placeAfter(BundleItem& item, BundleItem const* anchor) {
  if (item.bundleUUID() != UUID()) item.setBundle(*this);
  auto const before = ordering();
  auto list = before;
  // Those that have no place yet get the one that they are shown at.
  for (auto const& other : bundleItems())
    if (!contains(list, other->UUID())) list.push_back(other->UUID());
  std::erase(list, item.UUID());
  auto place = anchor ? std::find(list.begin(), list.end(), anchor->UUID()) : list.end();
  if (place != list.end()) ++place;
  list.insert(place, item.UUID());
  if (list == before) return;
  setContentValue("ordering", strings(list));
  mainMenu_ = {};
  setModified(true);
}
