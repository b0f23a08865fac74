#include "bundles/BundleItem.h"

#include "bundles/Bundle.h"
#include "bundles/bundle_folders.h"
#include "bundles/check/type_check.h"
#include "bundles/files/item_file.h"
#include "bundles/files/item_kinds.h"
#include "path/file_system.h"
#include "path/path.h"
#include "path/tree.h"
#include "platform/notification_center.h"
#include "platform/system/uuid.h"
#include "plist/delta.h"

#include <algorithm>

std::shared_ptr<BundleItem> BundleItem::bundleItemWithContent(bundles::item_owner& owner,
                                                              plist::dictionary content,
                                                              bundles::item_kind kind) {
  auto item = std::make_shared<BundleItem>(owner, kind, "", bundles::keys_from(content),
                                           std::vector<std::string>());
  item->content_ = std::move(content);
  item->hasContent_ = true;
  item->setModified(true);
  return item;
}

std::shared_ptr<BundleItem> BundleItem::itemWithStubs(
    bundles::item_owner& owner, bundles::item_kind kind, std::string bundleUUID,
    std::vector<bundles::BundleItemStub*> const& layers) {
  std::vector<std::string> paths;
  paths.reserve(layers.size());
  for (bundles::BundleItemStub* layer : layers) paths.push_back(std::move(layer->path));
  bundles::BundleItemStub& first = *layers.front();
  if (first.is_delta()) {
    plist::array digests;
    for (bundles::BundleItemStub const* layer : layers) {
      plist::dictionary digest = bundles::dictionary_from(layer->keys);
      for (auto const& [key, value] : layer->more.entries()) digest.insert_or_assign(key, value);
      digests.push_back(std::move(digest));
    }
    plist::value const merged = plist::MergePLists(digests);
    if (!merged) return nullptr;
    first.keys = bundles::keys_from(merged);
    first.more = bundles::language_entries(merged);
  }
  auto item = std::make_shared<BundleItem>(owner, kind, std::move(bundleUUID),
                                           std::move(first.keys), std::move(paths));
  item->languageEntries_ = std::move(first.more);
  return item;
}

BundleItem::BundleItem(bundles::item_owner& owner, bundles::item_kind kind, std::string bundleUUID,
                       bundles::item_keys keys, std::vector<std::string> sourcePaths)
    : BaseItem(owner, std::move(keys.name), kind, std::move(keys.uuid)),
      keys_(std::move(keys)),
      bundleUUID_(std::move(bundleUUID)),
      sourcePaths_(std::move(sourcePaths)) {}

void BundleItem::set(std::string& field, std::string v) {
  if (field == v) return;
  field = std::move(v);
  setModified(true);
}

void BundleItem::setScopeSelector(std::string selector) {
  if (keys_.scope == selector) return;
  set(keys_.scope, std::move(selector));
  if (kind() == bundles::item_kind::preference)
    platform::notification_center::standard().post("WynPreferencesDidChange", this);
}

void BundleItem::setKeyEquivalent(std::string const& key) {
  set(keys_.keyEquivalent, bundles::normalized_key_equivalent(key));
}

void BundleItem::setDraggedFileExtensions(std::vector<std::string> extensions) {
  if (keys_.draggedFileExtensions == extensions) return;
  keys_.draggedFileExtensions = std::move(extensions);
  setModified(true);
}

Bundle* BundleItem::bundle() const {
  return owner().bundleForUUID(bundleUUID_).get();
}

void BundleItem::setBundle(Bundle& bundle) {
  content();
  templateFiles();
  for (auto const& file : templateFiles_) file->content();
  if (Bundle* const old = this->bundle()) old->removeBundleItem(*this);
  bundleUUID_ = bundle.UUID();
  bundle.undeleteUUID(UUID());
  sourcePaths_.clear();
  pristineCopyPlistPath_.clear();
  bundle.registerBundleItem(*this);
  setModified(true);
}

bool BundleItem::isLocal() const {
  return !sourcePaths_.empty() &&
         bundles::is_below(sourcePaths_.front(), owner().folders().LocalBundlePath());
}

std::string BundleItem::localPath() const {
  if (!isLocal()) return "";
  return kind() == bundles::item_kind::file_template ? path::parent(sourcePaths_.front())
                                                     : sourcePaths_.front();
}

std::string BundleItem::bundlePath() const {
  if (sourcePaths_.empty()) return "";
  std::string const item = kind() == bundles::item_kind::file_template
                               ? path::parent(sourcePaths_.front())
                               : sourcePaths_.front();
  return path::parent(path::parent(item));
}

std::string BundleItem::supportPath() const {
  Bundle const* const in = bundle();
  return in ? in->supportPath() : "";
}

plist::value BundleItem::contentOfPaths(bundles::item_kind kind,
                                        std::vector<std::string> const& paths, std::string* base) {
  plist::array layers;
  for (std::string const& path : paths) {
    plist::value const layer = bundles::read_dictionary(path);
    if (!layer) continue;
    bundles::complain_of_types(layer, kind, path);
    layers.push_back(layer);
    if (layer["isDelta"].integer_or(0) != 0) continue;
    if (base != nullptr) *base = path;
    break;
  }
  plist::value const merged = plist::MergePLists(layers);
  return merged ? merged : plist::value(plist::dictionary());
}

void BundleItem::loadContent() {
  if (hasContent_) return;
  hasContent_ = true;
  content_ = contentOfPaths(kind(), sourcePaths_, &pristineCopyPlistPath_);
  isLost_ = !sourcePaths_.empty() && pristineCopyPlistPath_.empty();
}

bool BundleItem::canBeSaved() const {
  bool const stands = sourcePaths_.empty() || path::exists(sourcePaths_.front());
  return stands && !isLost_ && bundle() != nullptr;
}

plist::value BundleItem::languageEntries() const {
  plist::dictionary result = bundles::language_entries(hasContent_ ? content_ : languageEntries_);
  result.emplace("uuid", UUID());
  result.emplace("name", name());
  result.emplace("item", sourcePath());
  return result;
}

plist::value const& BundleItem::content() {
  loadContent();
  return content_;
}

void BundleItem::setContentValueForKey(plist::value v, std::string const& key) {
  if (content()[key] == v) return;
  plist::dictionary changed = content_.entries();
  changed.erase(key);
  if (v) changed.emplace(key, std::move(v));
  content_ = std::move(changed);
  setModified(true);
}

std::shared_ptr<BundleItem> BundleItem::createDuplicate() {
  prepareForSaving();
  plist::dictionary copied = content_.entries();
  copied.insert_or_assign("uuid", platform::stringWithUUID());
  auto copy = bundleItemWithContent(owner(), std::move(copied), kind());
  copy->bundleUUID_ = bundleUUID_;
  for (auto const& file : templateFiles())
    copy->templateFiles_.push_back(file->createDuplicate(copy->UUID()));
  copy->hasTemplateFiles_ = true;
  owner().addBundleItem(copy);
  if (Bundle* const in = bundle()) in->placeAfter(*copy, this);
  return copy;
}

std::string BundleItem::titleWithSelection(bool hasSelection, bool showTabTrigger) const {
  constexpr std::string_view mark = " / Selection";
  std::string title = name();
  if (auto const at = title.find(mark); at != std::string::npos) {
    std::string before = title.substr(0, at);
    std::string const after = title.substr(at + mark.size());
    if (hasSelection) {
      auto const blank = before.rfind(' ');
      before = (blank == std::string::npos ? "" : before.substr(0, blank + 1)) + "Selection";
    }
    title = before + after;
  }
  if (showTabTrigger && !keys_.tabTrigger.empty()) title += " (" + keys_.tabTrigger + "\u21e5)";
  return title;
}

std::vector<std::shared_ptr<TemplateFile>> const& BundleItem::templateFiles() {
  if (hasTemplateFiles_ || kind() != bundles::item_kind::file_template) return templateFiles_;
  hasTemplateFiles_ = true;
  if (sourcePaths_.empty()) return templateFiles_;
  // The user's own directory holds all files as soon as there is one.
  std::string const directory = path::parent(sourcePaths_.front());
  for (std::string const& name : path::visible_names(directory))
    if (name != "info.plist")
      templateFiles_.push_back(
          std::make_shared<TemplateFile>(owner(), UUID(), name, path::join(directory, name)));
  std::stable_sort(templateFiles_.begin(), templateFiles_.end(), [](auto const& a, auto const& b) {
    return bundles::caseInsensitiveCompare(a->name(), b->name()) < 0;
  });
  return templateFiles_;
}

std::shared_ptr<TemplateFile> BundleItem::newTemplateFile() {
  auto const taken = [&](std::string const& name) {
    return std::any_of(templateFiles_.begin(), templateFiles_.end(),
                       [&](auto const& file) { return file->name() == name; });
  };
  templateFiles();
  std::string name = "template_in.txt";
  for (int n = 2; taken(name); ++n) name = "template_in_" + std::to_string(n) + ".txt";
  templateFiles_.push_back(std::make_shared<TemplateFile>(owner(), UUID(), name));
  setModified(true);
  return templateFiles_.back();
}

void BundleItem::removeTemplateFile(TemplateFile const& file) {
  auto const found = std::find_if(templateFiles_.begin(), templateFiles_.end(),
                                  [&](auto const& own) { return own.get() == &file; });
  if (found == templateFiles_.end()) return;
  (*found)->removeTemplateFile();
  templateFiles_.erase(found);
}
