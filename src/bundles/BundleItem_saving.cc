#include "bundles/Bundle.h"
#include "bundles/BundleItem.h"
#include "bundles/bundle_folders.h"
#include "bundles/files/item_file.h"
#include "bundles/files/item_kinds.h"
#include "bundles/index/CacheManager.h"
#include "path/path.h"
#include "platform/desktop.h"
#include "platform/log.h"
#include "platform/system/library_folders.h"
#include "platform/system/trash.h"
#include "plist/delta.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

namespace {

constexpr char const* info_file = "/info.plist";

}  // namespace

void BundleItem::prepareForSaving() {
  plist::dictionary content = this->content().entries();
  bundles::item_keys keys = keys_;
  keys.uuid = UUID();
  keys.name = name();
  plist::dictionary const common = bundles::dictionary_from(keys);
  for (bundles::item_text_key const& k : bundles::item_text_keys)
    // What says nothing is left as it is, so that it doesn't become a change.
    if (!common.contains(k.key) && content.contains(k.key) &&
        !content.find(k.key)->second.string_or("x").empty())
      content.erase(std::string(k.key));
  if (keys.draggedFileExtensions.empty() &&
      !plist::value(content)[bundles::dragged_extensions_key].elements().empty())
    content.erase(std::string(bundles::dragged_extensions_key));
  for (auto const& [key, v] : common) content.insert_or_assign(key, v);
  content_ = std::move(content);
}

void BundleItem::saveChanges() {
  if (!isModified()) return;
  prepareForSaving();
  if (isLost_) {
    saveFault_ = sourcePath() + ": what was changed can't be saved, the item has vanished";
    platform::log_once(saveFault_);
    return platform::beep();
  }
  bool const was_local = isLocal();
  bool const is_delta_file = !pristineCopyPlistPath_.empty() && !sourcePaths_.empty() &&
                             pristineCopyPlistPath_ != sourcePaths_.front();
  plist::dictionary written = content_.entries();
  bool is_delta = false;
  if ((is_delta_file || !was_local) && !pristineCopyPlistPath_.empty()) {
    plist::value const pristine = bundles::read_dictionary(pristineCopyPlistPath_);
    is_delta = static_cast<bool>(pristine);
    if (is_delta) written = plist::DeltaPList(pristine.entries(), written);
  }
  if (kind() == bundles::item_kind::file_template)
    templateFiles();  // from the directory that holds them now
  if (!was_local && !makeLocalFile(is_delta)) return;
  saveFault_.clear();
  bool saved = bundles::write_dictionary(sourcePaths_.front(), written, &saveFault_);
  if (kind() == bundles::item_kind::file_template) saved = writeTemplateFiles(!was_local) && saved;
  owner().cache().invalidateCacheForPath(path::parent(kind() == bundles::item_kind::file_template
                                                          ? path::parent(sourcePaths_.front())
                                                          : sourcePaths_.front()));
  if (saved) return setModified(false);
  // There is no such file, so the next attempt begins anew. What there is of a template is kept.
  if (!was_local && kind() != bundles::item_kind::file_template)
    sourcePaths_.erase(sourcePaths_.begin());
  platform::beep();
}

bool BundleItem::makeLocalFile(bool is_delta) {
  Bundle* const in = bundle();
  std::string const home = in ? in->localPath() : "";
  std::string const directory = home + "/" + std::string(bundles::KindToDirectory(kind()));
  errno = 0;
  auto const path = home.empty() ? std::nullopt
                                 : bundles::UniqueFileInDirectory(
                                       directory, name(),
                                       is_delta ? "qnDelta" : bundles::KindToExtension(kind()));
  bool const is_template = kind() == bundles::item_kind::file_template;
  if (!path || (is_template && ::mkdir(path->c_str(), 0777) != 0)) {
    int const error = errno;
    saveFault_ = "failed to create directory " +
                 path.value_or(home.empty() ? owner().folders().LocalBundlePath() : directory);
    if (error != 0 && !home.empty()) saveFault_ += ": " + std::string(std::strerror(error));
    platform::log_once(saveFault_);
    platform::beep();
    return false;
  }
  sourcePaths_.insert(sourcePaths_.begin(), *path + (is_template ? info_file : ""));
  return true;
}

bool BundleItem::writeTemplateFiles(bool all) {
  std::string const directory = path::parent(sourcePaths_.front());
  bool saved = true;
  // What fails now is still to be done at the next attempt.
  for (auto const& file : templateFiles_)
    if (all) file->setModified(true);
  for (auto const& file : templateFiles_) {
    if (!file->isModified()) continue;
    bool const written = file->writeToDirectory(directory);
    if (written) file->setModified(false);
    saved = saved && written;
  }
  // From now on they are where the item is.
  if (saved) hasTemplateFiles_ = false, templateFiles_.clear();
  return saved;
}

std::string BundleItem::writeToDirectory(std::string const& directory) {
  prepareForSaving();
  auto const path =
      bundles::UniqueFileInDirectory(directory, name(), bundles::KindToExtension(kind()));
  if (!path) return "";
  plist::dictionary written = content_.entries();
  if (path->find(".qnbundle/") == std::string::npos)
    written.insert_or_assign("bundleUUID", bundleUUID_);
  for (char const* key : {"isDelta", "deletedKeys"}) written.erase(key);
  bool ok = true;
  if (kind() == bundles::item_kind::file_template) {
    ok = ::mkdir(path->c_str(), 0777) == 0 && bundles::write_dictionary(*path + info_file, written);
    for (auto const& file : templateFiles()) ok = ok && file->writeToDirectory(*path);
  } else {
    ok = bundles::write_dictionary(*path, written);
  }
  return ok ? path::name(*path) : "";
}

bool BundleItem::moveLocalFileToTrash() {
  std::string const local = localPath();
  if (local.empty()) return false;
  content();
  for (auto const& file : templateFiles()) file->content();
  owner().cache().invalidateCacheForPath(path::parent(local));
  if (int const error = platform::move_to_trash(local); error != 0) {
    platform::log_once("error moving item to trash (" + local + ")");
    platform::beep();
    return false;
  }
  sourcePaths_.erase(sourcePaths_.begin());
  return true;
}
