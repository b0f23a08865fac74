#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "bundles/BaseItem.h"
#include "bundles/TemplateFile.h"
#include "bundles/index/stubs.h"
#include "plist/value.h"

class Bundle;

/// A grammar, snippet, command and so on. What look-ups need is at hand; the whole dictionary is
/// read at its first use. Like its bundle it may consist of layers, and the user's changes go to a
/// file of the user's own. The item of a template is a directory with more files.
class BundleItem : public BaseItem, public std::enable_shared_from_this<BundleItem> {
 public:
  /// A new item, not on disk yet.
  static std::shared_ptr<BundleItem> bundleItemWithContent(bundles::item_owner& owner,
                                                           plist::dictionary content,
                                                           bundles::item_kind kind);
  /// From the digests of its layers, the highest priority first. Null when none of them is a base.
  /// Their strings are taken.
  static std::shared_ptr<BundleItem> itemWithStubs(
      bundles::item_owner& owner, bundles::item_kind kind, std::string bundleUUID,
      std::vector<bundles::BundleItemStub*> const& layers);

  BundleItem(bundles::item_owner& owner, bundles::item_kind kind, std::string bundleUUID,
             bundles::item_keys keys, std::vector<std::string> sourcePaths);

  std::string const& scopeSelector() const { return keys_.scope; }
  std::string const& keyEquivalent() const { return keys_.keyEquivalent; }
  std::string const& tabTrigger() const { return keys_.tabTrigger; }
  std::string const& mouseGesture() const { return keys_.mouseGesture; }
  std::vector<std::string> const& draggedFileExtensions() const {
    return keys_.draggedFileExtensions;
  }
  void setScopeSelector(std::string selector);
  void setKeyEquivalent(std::string const& key);
  void setTabTrigger(std::string trigger) { set(keys_.tabTrigger, std::move(trigger)); }
  void setMouseGesture(std::string gesture) { set(keys_.mouseGesture, std::move(gesture)); }
  void setDraggedFileExtensions(std::vector<std::string> extensions);

  std::string const& bundleUUID() const { return bundleUUID_; }
  void setBundleUUID(std::string uuid) { bundleUUID_ = std::move(uuid); }
  /// Null when it isn't loaded.
  Bundle* bundle() const;
  /// Moves it into another bundle, as a whole.
  void setBundle(Bundle& bundle);

  /// The property lists of the layers, the highest priority first; empty for a new item.
  std::vector<std::string> const& sourcePaths() const { return sourcePaths_; }
  /// "" for a new item.
  std::string sourcePath() const { return sourcePaths_.empty() ? "" : sourcePaths_.front(); }
  /// The user's own file, for a template its directory; "" if there is none.
  std::string localPath() const;
  /// The directory of the bundle in which the first source lies.
  std::string bundlePath() const;
  std::string supportPath() const;

  /// The merged dictionary; empty when the files have vanished.
  plist::value const& content();
  /// Whether there is something to be saved and somewhere to save it.
  bool canBeSaved() const;
  /// What content() is, from files; `base` becomes the one that is no delta. Any thread.
  static plist::value contentOfPaths(bundles::item_kind kind, std::vector<std::string> const& paths,
                                     std::string* base = nullptr);
  /// Of a grammar: what determines which files are in its language, with `uuid`, `name` and, for
  /// messages, `item`, its path. Without reading the file.
  plist::value languageEntries() const;
  void setContentValueForKey(plist::value v, std::string const& key);

  void prepareForSaving();
  void saveChanges() override;
  /// Why the last saveChanges() failed, for the user, with the path.
  std::string const& saveFault() const { return saveFault_; }
  std::string writeToDirectory(std::string const& directory) override;
  std::shared_ptr<BundleItem> createDuplicate();
  /// True if it had one and it is in the trash now.
  bool moveLocalFileToTrash();

  /// How menus name it: " / Selection" in the name is for a view with a selection. A tab trigger is
  /// shown after an arrow.
  std::string titleWithSelection(bool hasSelection, bool showTabTrigger = true) const;

  /// The files of a template, by name.
  std::vector<std::shared_ptr<TemplateFile>> const& templateFiles();
  std::shared_ptr<TemplateFile> newTemplateFile();
  void removeTemplateFile(TemplateFile const& file);

 private:
  void set(std::string& field, std::string v);
  void loadContent();
  bool isLocal() const;
  bool makeLocalFile(bool is_delta);
  bool writeTemplateFiles(bool all);

  bundles::item_keys keys_;  // without uuid and name
  std::string bundleUUID_;
  std::vector<std::string> sourcePaths_;
  std::string pristineCopyPlistPath_;
  plist::value content_, languageEntries_;
  bool hasContent_ = false, hasTemplateFiles_ = false;
  bool isLost_ = false;  // the files had vanished when the content was asked for
  std::string saveFault_;
  std::vector<std::shared_ptr<TemplateFile>> templateFiles_;
};
