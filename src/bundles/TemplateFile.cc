#include "bundles/TemplateFile.h"

#include "bundles/BundleItem.h"
#include "bundles/bundle_folders.h"
#include "bundles/files/item_file.h"
#include "path/file_system.h"
#include "path/path.h"
#include "platform/desktop.h"
#include "platform/log.h"
#include "platform/system/rename_to_new.h"
#include "platform/system/trash.h"

#include <fcntl.h>

#include <cerrno>

namespace {

constexpr char const* new_content =
    "//\n"
    "//  ${QN_NEW_FILE_BASENAME}\n"
    "//\n"
    "//  Created by ${QN_FULLNAME} on ${QN_DATE}.\n"
    "//  Copyright (c) ${QN_YEAR} ${QN_ORGANIZATION_NAME}. All rights reserved.\n"
    "//\n"
    "\n";

}  // namespace

TemplateFile::TemplateFile(bundles::item_owner& owner, std::string bundleItemUUID, std::string name)
    : owner_(owner),
      bundleItemUUID_(std::move(bundleItemUUID)),
      name_(std::move(name)),
      content_(new_content),
      isModified_(true) {}

TemplateFile::TemplateFile(bundles::item_owner& owner, std::string bundleItemUUID, std::string name,
                           std::string path)
    : owner_(owner),
      bundleItemUUID_(std::move(bundleItemUUID)),
      name_(std::move(name)),
      path_(std::move(path)) {}

std::string const& TemplateFile::content() {
  if (!content_) content_ = path::content(path_);
  return *content_;
}

bool TemplateFile::isLocal() const {
  return bundles::is_below(path_, owner_.folders().LocalBundlePath());
}

bool TemplateFile::refuse(std::string const& name, char const* why) {
  platform::log_once("can't rename template to " + name + " (" + why + ")");
  platform::beep();
  return false;
}

bool TemplateFile::setName(std::string const& name) {
  if (name == name_) return true;
  auto const item = owner_.bundleItemForUUID(bundleItemUUID_);
  if (item != nullptr)
    for (auto const& file : item->templateFiles())
      if (file.get() != this && file->name() == name) return refuse(name, "name already in use");
  if (isLocal()) {
    std::string const target = path::join(path::parent(path_), name);
    int const error = platform::rename_to_new(AT_FDCWD, path_.c_str(), target.c_str(),
                                              platform::file_calls::system());
    if (error == EEXIST) return refuse(name, "file already exists");
    if (error != 0) return refuse(name, "rename failed");
    path_ = target;
  } else {
    content();
    isModified_ = true;
    if (item != nullptr) item->setModified(true);
  }
  name_ = name;
  return true;
}

void TemplateFile::setContent(std::string content) {
  if (content == this->content()) return;
  content_ = std::move(content);
  isModified_ = true;
  if (auto const item = owner_.bundleItemForUUID(bundleItemUUID_)) item->setModified(true);
}

std::shared_ptr<TemplateFile> TemplateFile::createDuplicate(std::string bundleItemUUID) {
  auto copy = std::make_shared<TemplateFile>(owner_, std::move(bundleItemUUID), name_);
  copy->content_ = content();
  return copy;
}

bool TemplateFile::writeToDirectory(std::string const& directory) {
  std::string const target = path::join(directory, name_);
  return bundles::write_file(target, content());
}

void TemplateFile::removeTemplateFile() {
  if (!isLocal()) {
    if (auto const item = owner_.bundleItemForUUID(bundleItemUUID_)) item->setModified(true);
  } else if (platform::move_to_trash(path_) != 0) {
    platform::log_once("error moving template to trash (" + path_ + ")");
    platform::beep();
  }
}
