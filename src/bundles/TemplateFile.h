#pragma once

#include "bundles/item_owner.h"

#include <memory>
#include <optional>
#include <string>

/// A file of a template, read at its first use. Main thread only.
class TemplateFile {
 public:
  /// A new one, with a comment header for the user's files.
  TemplateFile(bundles::item_owner& owner, std::string bundleItemUUID, std::string name);
  /// The one at the path.
  TemplateFile(bundles::item_owner& owner, std::string bundleItemUUID, std::string name,
               std::string path);

  std::string const& name() const { return name_; }
  std::string const& path() const { return path_; }
  bool isModified() const { return isModified_; }
  /// UTF-8.
  std::string const& content();

  /// False, after a complaint, when another file has the name or the file can't be renamed.
  bool setName(std::string const& name);
  void setContent(std::string content);
  std::shared_ptr<TemplateFile> createDuplicate(std::string bundleItemUUID);
  bool writeToDirectory(std::string const& directory);
  void setModified(bool modified) { isModified_ = modified; }
  /// Moves the user's own file to the trash; another stays where it is.
  void removeTemplateFile();

 private:
  bool isLocal() const;
  bool refuse(std::string const& name, char const* why);

  bundles::item_owner& owner_;
  std::string bundleItemUUID_, name_, path_;
  std::optional<std::string> content_;
  bool isModified_ = false;
};
