#pragma once

#include <array>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "bundles/Bundle.h"
#include "bundles/BundleItem.h"
#include "bundles/bundle_folders.h"
#include "bundles/index/CacheManager.h"
#include "bundles/item_owner.h"
#include "platform/event.h"
#include "platform/responder.h"
#include "platform/string_table.h"

namespace bundles {
class item_view;
}

/// Owns every loaded bundle and item, and finds them by UUID and kind. Bundles are loaded at once,
/// the items of a kind when they are first asked for: a start needs few of them. Main thread only.
///
///     auto& manager = BundleManager::sharedInstance();
///     for (auto const& item : manager.bundleItemsOfKind(bundles::item_kind::language))
///       use(item->content());
///
/// Posts WynBundlesDidChange when the bundles have been loaded again: items held from before are
/// stale then. User defaults: WynBundleManagerDisabledBundles and WynBundleManagerDeletedBundles,
/// arrays of UUIDs, and WynDefaultBundleForNewBundleItems, a UUID.
class BundleManager final : public bundles::item_owner {
 public:
  static constexpr char const* did_change = "WynBundlesDidChange";
  /// Posted by what has changed a grammar or a preference.
  static constexpr char const* languages_did_change = "WynLanguagesDidChange";
  static constexpr char const* preferences_did_change = "WynPreferencesDidChange";
  using bundle_list = std::vector<std::shared_ptr<Bundle>>;
  using item_list = std::vector<std::shared_ptr<BundleItem>>;

  /// The one of the process, made and loaded at the first call.
  static BundleManager& sharedInstance();
  /// Writes the index of the shared instance, if there is one. To be called at the end.
  static void saveSharedCache();
  void saveCache();

  /// Loads the bundles.
  explicit BundleManager(bundles::bundle_folders folders);
  BundleManager(BundleManager const&) = delete;
  BundleManager& operator=(BundleManager const&) = delete;

  bundles::bundle_folders const& folders() const override { return folders_; }
  CacheManager& cache() override { return cache_; }

  /// Reloads bundles; unsaved changes are lost.
  void loadBundles();
  /// Saves, reloads and notifies observers. What could not be saved stays as it is in memory.
  void reloadBundles();
  void saveChanges();
  /// True also when something was added or removed: look-up tables are made again.
  void setModified(bool modified) override;
  bool isModified() const { return isModified_; }

  /// Null for a UUID that isn't loaded.
  std::shared_ptr<Bundle> bundleForUUID(std::string_view uuid) const override;
  std::shared_ptr<BundleItem> bundleItemForUUID(std::string_view uuid) const override;
  /// By name.
  bundle_list bundles() const;
  /// In the order in which they were loaded: by search path, bundle, kind, file name.
  item_list const& bundleItems() const;
  item_list const& bundleItemsOfKind(bundles::item_kind kind);
  item_list bundleItemsOfKinds(std::vector<bundles::item_kind> const& kinds);
  item_list const& bundleItemsOfBundle(std::string_view uuid) override;
  /// Those that have an item of one of the kinds, by name.
  bundle_list bundlesWithItemsOfKinds(std::vector<bundles::item_kind> const& kinds);
  /// The contents of all items of kind language, in their order. The reference is good until the
  /// bundles change.
  plist::array const& languages();
  /// What BundleItem::languageEntries() says of each of them.
  plist::array const& languageEntries();
  /// Another number, unique in the process, after each change.
  unsigned long revision() const { return revision_; }

  void addBundle(std::shared_ptr<Bundle> bundle);
  void addBundleItem(std::shared_ptr<BundleItem> item) override;
  /// The user's own and installed directories go to the trash; one that is elsewhere is hidden.
  void removeBundle(std::string const& uuid);
  void removeBundleItem(std::string const& uuid);

  /// The bundle for new items; made if there is none.
  std::shared_ptr<Bundle> defaultBundle();
  void setDefaultBundle(Bundle const& bundle);
  /// Also those that are disabled.
  bundle_list allBundlesOnDisk();

  /// Installs a bundle or an item, after asking where something would be replaced. False when the
  /// file is not one, by its extension, or an item that is in use where it stands.
  bool canHandleFile(std::string const& path);
  void installBundle(std::string const& directory);
  void installBundleItemOfKind(std::string const& path, bundles::item_kind kind);

  // Look-ups (BundleManager_Dispatch.cc). A scope is the names at the caret, outermost first and
  // separated by blanks. Texts are UTF-8.
  /// Those of exactly this key, or else of the same key off the keypad. The reference is good until
  /// the bundles change.
  item_list const& bundleItemsForKeyString(std::string_view key);
  item_list bundleItemsForKeyString(std::string_view key, std::string_view scope);
  /// Those with the longest trigger that `text`, what stands before the caret on its line, ends in.
  item_list bundleItemsForTabTrigger(std::string_view text,
                                     std::optional<std::string_view> scope = std::nullopt);
  /// Of all items, in bytes: no more of the text before the caret has to be known.
  std::size_t longestTabTrigger();
  /// A gesture is what the mouse draws, as letters for strokes: "DR" is down, then right.
  item_list bundleItemsForMouseGesture(std::string_view gesture, std::string_view scope);
  bool hasMouseGestures();
  /// Commands for a file with this extension, or else for any file.
  item_list bundleItemsForFileDrop(std::string_view path, std::string_view scope);
  /// The items whose selectors fit the scope best; without a scope all of them.
  static item_list filterItemsInScope(item_list const& items,
                                      std::optional<std::string_view> scope);
  /// Those that apply, the best first.
  static item_list sortItemsAccordingToScope(item_list const& items, std::string_view scope);

  // Executing (BundleManager_Executing.cc)
  /// Whether a responder from `first` on can execute the item.
  static bool canExecuteItem(BundleItem const& item, platform::responder* first);
  /// Sends the item's action to `first` and those after it; false if no responder performs it, and
  /// `is_done` then stays as it is. It is currentBundleItem() meanwhile.
  bool executeItem(std::shared_ptr<BundleItem> const& item, platform::responder& first,
                   bool* is_done = nullptr);
  /// False also if there is no such item.
  bool executeItemWithUUID(std::string_view uuid, platform::responder& first);
  /// The one there is, or which the user chooses from a menu; null for none.
  std::shared_ptr<BundleItem> chooseItem(item_list const& items, bundles::item_view& view,
                                         bool at_mouse);
  /// Executes what a key stands for at the caret. True when there was anything, also if the user
  /// chose nothing of it.
  bool shouldSwallowEvent(platform::key_event const& event, bundles::item_view& view);
  /// The same for what the mouse has drawn.
  bool executeMouseGesture(std::string_view gesture, bundles::item_view& view);

  // The items that are executing, the innermost last.
  void pushBundleItem(std::shared_ptr<BundleItem> item) { stack_.push_back(std::move(item)); }
  void popBundleItem() { stack_.pop_back(); }
  /// Null when none is.
  BundleItem* currentBundleItem() const { return stack_.empty() ? nullptr : stack_.back().get(); }

 private:
  using uuids = std::vector<std::string>;
  template <typename T>
  using lists = std::unordered_map<std::string, std::vector<std::shared_ptr<T>>>;

  bool executeOneOf(item_list candidates, bundles::item_view& view);
  bundle_list bundlesOnDiskExcluding(uuids excluded);
  void loadKind(bundles::item_kind kind) const;
  void loadItems() const;
  item_list loadedItems() const;
  void dropTables();
  void makeDispatchTables();
  bool isHidden(std::string const& uuid) const;
  void showAgain(std::string const& uuid);
  bool updateInstalledItem(BundleItem& item);
  bool standsOnSearchPath(std::string const& path) const;
  bool isLoadedFrom(std::string const& path) const;

  bundles::bundle_folders folders_;
  CacheManager cache_;
  bundle_list bundles_;
  std::unordered_map<std::string_view, std::shared_ptr<Bundle>> bundlesByUUID_;
  item_list stack_;
  bool isModified_ = false;
  unsigned long revision_ = 0;

  // Loaded when they are asked for: first kind by kind, then, if need be, all. From then on the
  // lists of kinds are made of these.
  mutable std::map<bundles::item_kind, item_list> itemsOfKind_;
  mutable bool hasItems_ = false;
  mutable item_list items_;
  mutable std::unordered_map<std::string_view, std::shared_ptr<BundleItem>> itemsByUUID_;

  // Made when they are asked for.
  lists<BundleItem> itemsOfBundle_;
  bool hasItemsOfBundle_ = false, hasLanguages_ = false, hasLanguageEntries_ = false;
  plist::array languages_, languageEntries_;
  platform::string_table<item_list> itemsForKey_;
  std::array<item_list, 256> itemsForTrigger_;  // by the last byte of the trigger
  std::size_t longestTabTrigger_ = 0;
  bool hasDispatchTables_ = false;
};
