#pragma once

#include "bundles/files/item_kinds.h"
#include "bundles/item_owner.h"

#include <string>

/// What bundles and their items have in common. Identified by the UUID; names may repeat. Owned by
/// the owner, which must outlive it. Main thread only.
class BaseItem {
 public:
  /// Without a UUID it gets a fresh one.
  BaseItem(bundles::item_owner& owner, std::string name, bundles::item_kind kind, std::string UUID);
  BaseItem(BaseItem const&) = delete;
  BaseItem& operator=(BaseItem const&) = delete;
  virtual ~BaseItem() = default;

  std::string const& name() const { return name_; }
  bundles::item_kind kind() const { return kind_; }
  std::string const& UUID() const { return UUID_; }
  bool isModified() const { return isModified_; }
  bundles::item_owner& owner() const { return owner_; }

  void setName(std::string name);
  /// What is modified is written by saveChanges(), and the owner is notified.
  void setModified(bool modified);

  /// Whether both are the same bundle or item.
  bool isEqual(BaseItem const& other) const;

  /// Writes all of it, without layers, under a free name in the directory. The name, or "" on
  /// failure.
  virtual std::string writeToDirectory(std::string const& directory) = 0;
  /// Writes what has changed to the user's own files. On failure, which is logged and beeps, it
  /// stays modified.
  virtual void saveChanges() = 0;

 private:
  bundles::item_owner& owner_;
  std::string name_, UUID_;
  bundles::item_kind kind_;
  bool isModified_ = false;
};

namespace bundles {

/// Below, equal to or above 0, letters of either case being equal.
int caseInsensitiveCompare(std::string const& a, std::string const& b);

}  // namespace bundles
