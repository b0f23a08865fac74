#include "bundles/BundleManager.h"

#include "bundles/files/item_file.h"
#include "bundles/files/item_kinds.h"
#include "bundles/index/bundle_scan.h"
#include "path/path.h"
#include "platform/notification_center.h"
#include "platform/system/trash.h"
#include "settings/store.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <unordered_set>

namespace {

constexpr char const* disabled_key = "WynBundleManagerDisabledBundles";
constexpr char const* deleted_key = "WynBundleManagerDeletedBundles";
constexpr char const* default_bundle_key = "WynDefaultBundleForNewBundleItems";

// Left to the end of the process: freeing thousands of items takes as long as loading them.
BundleManager*& shared() {
  static BundleManager* instance = nullptr;
  return instance;
}

std::vector<std::string> stored_uuids(char const* key) {
  plist::dictionary const holder{{key, settings::store().get(key)}};
  return bundles::string_array(holder, key);
}

std::string full_user_name() {
  passwd const* const entry = ::getpwuid(::getuid());
  if (entry == nullptr) return "User";
  std::string name = entry->pw_gecos ? entry->pw_gecos : "";
  name.resize(std::min(name.find(','), name.size()));
  return name.empty() ? entry->pw_name : name;
}

void sort_by_name(BundleManager::bundle_list& list) {
  std::stable_sort(list.begin(), list.end(), [](auto const& a, auto const& b) {
    return bundles::caseInsensitiveCompare(a->name(), b->name()) < 0;
  });
}

// Of several with one UUID the last counts.
void keep_last(BundleManager::item_list& items) {
  std::unordered_set<std::string_view> seen;
  seen.reserve(items.size());
  std::reverse(items.begin(), items.end());
  std::erase_if(items, [&](auto const& item) { return !seen.insert(item->UUID()).second; });
  std::reverse(items.begin(), items.end());
}

template <typename List>
void erase_uuid(List& list, std::string_view uuid) {
  std::erase_if(list, [&](auto const& own) { return own->UUID() == uuid; });
}

}  // namespace

BundleManager& BundleManager::sharedInstance() {
  if (!shared()) shared() = new BundleManager(bundles::bundle_folders::standard());
  return *shared();
}

void BundleManager::saveSharedCache() {
  if (shared()) shared()->saveCache();
}

// What belongs to kinds of which this run needed nothing is still good.
void BundleManager::saveCache() {
  for (auto const& bundle : bundles_)
    for (std::string const& path : bundle->bundlePaths())
      for (bundles::kind_row const& kind : bundles::item_kinds)
        cache_.keepPath(path + "/" + std::string(kind.directory));
  cache_.saveCache();
}

BundleManager::BundleManager(bundles::bundle_folders folders)
    : folders_(std::move(folders)), cache_(folders_.index_file) {
  loadBundles();
}

void BundleManager::dropTables() {
  static unsigned long last_revision = 0;
  revision_ = ++last_revision;
  hasItemsOfBundle_ = hasLanguages_ = hasLanguageEntries_ = hasDispatchTables_ = false;
  itemsOfBundle_.clear();
  languages_.clear();
  languageEntries_.clear();
  if (hasItems_) itemsOfKind_.clear();
}

void BundleManager::loadBundles() {
  dropTables();
  itemsOfKind_.clear();
  hasItems_ = false;
  itemsByUUID_.clear();
  items_.clear();
  bundlesByUUID_.clear();
  bundles_.clear();
  for (auto& bundle : bundlesOnDiskExcluding(stored_uuids(disabled_key)))
    addBundle(std::move(bundle));
  isModified_ = false;
}

void BundleManager::loadKind(bundles::item_kind kind) const {
  auto const [place, is_new] = itemsOfKind_.try_emplace(kind);
  if (!is_new) return;
  item_list& list = place->second;
  for (auto const& bundle : bundles_)
    for (auto& item : bundle->bundleItemsOnDisk(kind)) list.push_back(std::move(item));
  keep_last(list);
}

void BundleManager::loadItems() const {
  if (hasItems_) return;
  std::unordered_map<std::string_view, std::size_t> rank;
  for (auto const& bundle : bundles_) rank.emplace(bundle->UUID(), rank.size());
  for (bundles::kind_row const& kind : bundles::item_kinds) {
    loadKind(kind.kind);
    item_list const& list = itemsOfKind_[kind.kind];
    items_.insert(items_.end(), list.begin(), list.end());
  }
  std::stable_sort(items_.begin(), items_.end(), [&](auto const& a, auto const& b) {
    return rank[a->bundleUUID()] < rank[b->bundleUUID()];
  });
  keep_last(items_);
  itemsByUUID_.reserve(items_.size());
  for (auto const& item : items_) itemsByUUID_.emplace(item->UUID(), item);
  itemsOfKind_.clear();
  hasItems_ = true;
}

BundleManager::item_list const& BundleManager::bundleItems() const {
  loadItems();
  return items_;
}

BundleManager::bundle_list BundleManager::bundlesOnDiskExcluding(uuids excluded) {
  for (std::string& uuid : stored_uuids(deleted_key)) excluded.push_back(std::move(uuid));
  std::vector<std::string> order;
  std::unordered_map<std::string, std::vector<std::string>> directories;
  for (std::string const& folder : folders_.bundlePaths()) {
    for (bundles::BundleStub& stub : bundles::bundles_in(cache_, folder)) {
      if (std::find(excluded.begin(), excluded.end(), stub.UUID) != excluded.end()) continue;
      auto& list = directories[stub.UUID];
      if (list.empty()) order.push_back(stub.UUID);
      list.push_back(path::parent(stub.path));
    }
  }
  bundle_list result;
  for (std::string const& uuid : order)
    if (auto bundle = Bundle::bundleWithPaths(*this, std::move(directories[uuid])))
      result.push_back(std::move(bundle));
  return result;
}

BundleManager::bundle_list BundleManager::allBundlesOnDisk() {
  auto result = bundlesOnDiskExcluding({});
  sort_by_name(result);
  return result;
}

void BundleManager::reloadBundles() {
  saveChanges();
  bundle_list const former_bundles = isModified_ ? bundles_ : bundle_list();
  item_list const former_items = isModified_ ? loadedItems() : item_list();
  loadBundles();
  for (auto const& bundle : former_bundles)
    if (bundle->isModified() && bundle->canBeSaved()) addBundle(bundle), isModified_ = true;
  for (auto const& item : former_items)
    if (item->isModified() && item->canBeSaved()) addBundleItem(item);
  platform::notification_center::standard().post(did_change, this);
}

BundleManager::item_list BundleManager::loadedItems() const {
  item_list items = items_;
  for (auto const& [kind, list] : itemsOfKind_) items.insert(items.end(), list.begin(), list.end());
  return items;
}

void BundleManager::saveChanges() {
  if (!isModified_) return;
  bool saved = true;
  for (auto const& bundle : bundle_list(bundles_)) {
    bundle->saveChanges();
    saved = saved && !bundle->isModified();
  }
  // What was changed has been asked for before.
  for (auto const& item : loadedItems()) {
    item->saveChanges();
    saved = saved && !item->isModified();
  }
  isModified_ = !saved;
}

void BundleManager::setModified(bool modified) {
  isModified_ = modified;
  if (modified) dropTables();
}

std::shared_ptr<Bundle> BundleManager::bundleForUUID(std::string_view uuid) const {
  auto const found = bundlesByUUID_.find(uuid);
  return found == bundlesByUUID_.end() ? nullptr : found->second;
}

std::shared_ptr<BundleItem> BundleManager::bundleItemForUUID(std::string_view uuid) const {
  loadItems();
  auto const found = itemsByUUID_.find(uuid);
  return found == itemsByUUID_.end() ? nullptr : found->second;
}

BundleManager::bundle_list BundleManager::bundles() const {
  bundle_list result = bundles_;
  sort_by_name(result);
  return result;
}

BundleManager::item_list const& BundleManager::bundleItemsOfKind(bundles::item_kind kind) {
  if (!hasItems_) {
    loadKind(kind);
  } else if (itemsOfKind_.empty()) {
    for (auto const& item : items_) itemsOfKind_[item->kind()].push_back(item);
  }
  static item_list const none;
  auto const found = itemsOfKind_.find(kind);
  return found == itemsOfKind_.end() ? none : found->second;
}

BundleManager::item_list BundleManager::bundleItemsOfKinds(
    std::vector<bundles::item_kind> const& kinds) {
  item_list result;
  for (bundles::item_kind const kind : kinds) {
    item_list const& more = bundleItemsOfKind(kind);
    result.insert(result.end(), more.begin(), more.end());
  }
  return result;
}

BundleManager::item_list const& BundleManager::bundleItemsOfBundle(std::string_view uuid) {
  if (!hasItemsOfBundle_)
    for (auto const& item : bundleItems()) itemsOfBundle_[item->bundleUUID()].push_back(item);
  hasItemsOfBundle_ = true;
  return itemsOfBundle_[std::string(uuid)];
}

BundleManager::bundle_list BundleManager::bundlesWithItemsOfKinds(
    std::vector<bundles::item_kind> const& kinds) {
  bundle_list result = bundles();
  std::erase_if(result, [&](auto const& bundle) {
    item_list const& items = bundleItemsOfBundle(bundle->UUID());
    return std::none_of(items.begin(), items.end(), [&](auto const& item) {
      return std::find(kinds.begin(), kinds.end(), item->kind()) != kinds.end();
    });
  });
  return result;
}

plist::array const& BundleManager::languages() {
  if (!hasLanguages_)
    for (auto const& item : bundleItemsOfKind(bundles::item_kind::language))
      languages_.push_back(item->content());
  hasLanguages_ = true;
  return languages_;
}

plist::array const& BundleManager::languageEntries() {
  if (!hasLanguageEntries_)
    for (auto const& item : bundleItemsOfKind(bundles::item_kind::language))
      languageEntries_.push_back(item->languageEntries());
  hasLanguageEntries_ = true;
  return languageEntries_;
}

void BundleManager::addBundle(std::shared_ptr<Bundle> bundle) {
  bundlesByUUID_.erase(bundle->UUID());
  erase_uuid(bundles_, bundle->UUID());
  bundlesByUUID_.emplace(bundle->UUID(), bundle);
  bundles_.push_back(std::move(bundle));
}

void BundleManager::addBundleItem(std::shared_ptr<BundleItem> item) {
  loadItems();
  itemsByUUID_.erase(item->UUID());
  erase_uuid(items_, item->UUID());
  itemsByUUID_.emplace(item->UUID(), item);
  items_.push_back(std::move(item));
  setModified(true);
}

void BundleManager::removeBundle(std::string const& uuid) {
  auto const bundle = bundleForUUID(uuid);
  if (bundle == nullptr) return;
  bool stays = false;
  for (std::string const& path : bundle->bundlePaths()) {
    bool const own = bundles::is_below(path, folders_.LocalBundlePath()) ||
                     bundles::is_below(path, folders_.PristineCopyBundlePath());
    stays = !own || platform::move_to_trash(path) != 0 || stays;
  }
  if (stays) {
    auto list = stored_uuids(deleted_key);
    list.push_back(uuid);
    settings::store().set(deleted_key, plist::array(list.begin(), list.end()));
  }
  for (auto const& item : item_list(bundleItemsOfBundle(uuid))) {
    itemsByUUID_.erase(item->UUID());
    erase_uuid(items_, item->UUID());
  }
  bundlesByUUID_.erase(uuid);
  erase_uuid(bundles_, uuid);
  setModified(true);
}

void BundleManager::removeBundleItem(std::string const& uuid) {
  auto const item = bundleItemForUUID(uuid);
  if (item == nullptr) return;
  bool const only_local = item->sourcePaths().size() == 1 && !item->localPath().empty();
  Bundle* const bundle = item->bundle();
  if (only_local || bundle == nullptr)
    item->moveLocalFileToTrash();
  else
    bundle->removeBundleItem(*item);
  itemsByUUID_.erase(uuid);
  erase_uuid(items_, uuid);
  setModified(true);
}

std::shared_ptr<Bundle> BundleManager::defaultBundle() {
  auto& defaults = settings::store();
  if (auto bundle = bundleForUUID(defaults.string(default_bundle_key))) return bundle;
  std::string const wanted = full_user_name() + "\u2019s Bundle";
  std::shared_ptr<Bundle> found;
  for (auto const& bundle : bundles())
    if (bundle->name() == wanted) found = bundle;
  if (found == nullptr) {
    found = Bundle::bundleWithName(*this, wanted);
    addBundle(found);
  }
  setDefaultBundle(*found);
  return found;
}

void BundleManager::setDefaultBundle(Bundle const& bundle) {
  settings::store().set(default_bundle_key, bundle.UUID());
}

bool BundleManager::isHidden(std::string const& uuid) const {
  for (char const* key : {disabled_key, deleted_key}) {
    auto const list = stored_uuids(key);
    if (std::find(list.begin(), list.end(), uuid) != list.end()) return true;
  }
  return false;
}

void BundleManager::showAgain(std::string const& uuid) {
  for (char const* key : {disabled_key, deleted_key}) {
    auto list = stored_uuids(key);
    if (std::erase(list, uuid) != 0)
      settings::store().set(key, plist::array(list.begin(), list.end()));
  }
  reloadBundles();
}
