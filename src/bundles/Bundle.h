#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bundles/BaseItem.h"
#include "plist/value.h"

class BundleItem;

/// A directory of grammars, snippets, commands and so on, by its info.plist. Directories with the
/// same UUID on several search paths are one bundle: each may be the whole or hold changes of the
/// next. What the user changes goes to a directory of the user's own.
class Bundle : public BaseItem, public std::enable_shared_from_this<Bundle> {
 public:
  /// One that isn't on disk yet.
  static std::shared_ptr<Bundle> bundleWithName(bundles::item_owner& owner, std::string name);
  /// Of directories with one UUID, the highest priority first. Null when they describe no bundle;
  /// the user has been alerted to a broken one.
  static std::shared_ptr<Bundle> bundleWithPaths(bundles::item_owner& owner,
                                                 std::vector<std::string> paths);

  /// `content` may lack what bundle_head() leaves out if there are paths.
  Bundle(bundles::item_owner& owner, plist::value content, std::vector<std::string> paths,
         std::string pristineCopyPlistPath);

  plist::value const& content() const;
  std::vector<std::string> const& bundlePaths() const { return bundlePaths_; }
  /// The info.plist of the layer that is no delta; "" for a new bundle.
  std::string const& pristineCopyPlistPath() const { return pristineCopyPlistPath_; }

  // UUIDs of items.
  std::vector<std::string> ordering() const;
  std::vector<std::string> disabled() const;
  std::vector<std::string> deleted() const;

  /// The items: first those that `ordering` names.
  std::vector<std::shared_ptr<BundleItem>> bundleItems() const;
  std::vector<std::shared_ptr<BundleItem>> bundleItemsOfKind(bundles::item_kind kind) const;
  /// Those of one kind, read again from the directories, without what is disabled or deleted.
  std::vector<std::shared_ptr<BundleItem>> bundleItemsOnDisk(bundles::item_kind kind) const;

  /// A dictionary of `items`, `submenus` and `excludedItems`, completed by items that it doesn't
  /// name and rid of what is no item of this bundle.
  plist::value menuStructure();
  void setMenuStructure(plist::value const& menu);
  /// The UUIDs of the menu, those of each submenu between two separators.
  std::vector<std::string> flatMenu();

  void prepareForSaving();
  void saveChanges() override;
  std::string writeToDirectory(std::string const& directory) override;

  /// Whether there is something to be saved and somewhere to save it.
  bool canBeSaved() const;
  /// The user's own directory; made if there is none. "" if that fails.
  std::string localPath();
  /// The directory into which items are installed; made if there is none. "" if that fails.
  std::string bundleItemInstallPath();
  /// The directory with files for the bundle's commands; "" if there is none.
  std::string supportPath() const;

  /// Hides the item, whose own file goes to the trash.
  void removeBundleItem(BundleItem& item);
  /// To be called when an item has come into this bundle.
  void registerBundleItem(BundleItem& item);
  void enableUUID(std::string_view uuid) { takeOffList("disabled", uuid); }
  void undeleteUUID(std::string_view uuid) { takeOffList("deleted", uuid); }
  /// Moves the item into this bundle, after the anchor or to the end.
  void placeAfter(BundleItem& item, BundleItem const* anchor);

 private:
  void setContentValue(std::string_view key, plist::value v);
  void takeOffList(std::string_view key, std::string_view uuid);
  void removeFromMenus(std::string const& uuid);
  bool isLocal() const;
  bool makeLocalPath();

  mutable plist::value content_;  // from the start only the head of it
  mutable bool hasContent_;
  mutable bool isLost_ = false;  // the files had vanished when all of the content was asked for
  plist::value mainMenu_;        // the working copy, nothing until it is asked for
  std::vector<std::string> bundlePaths_;
  std::string pristineCopyPlistPath_;
};
