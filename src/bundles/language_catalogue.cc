#include "bundles/language_catalogue.h"

#include "bundles/BundleManager.h"

namespace {

std::vector<grammar::catalogue::entry> entries_of(BundleManager::item_list const& items) {
  std::vector<grammar::catalogue::entry> entries;
  for (auto const& item : items) {
    plist::value const& content = item->content();
    entries.push_back({content["scopeName"].string_or(""), item->name(), item->sourcePath(),
                       [content] { return content; }});
  }
  return entries;
}

}  // namespace

std::shared_ptr<grammar::catalogue const> language_catalogue(BundleManager& manager) {
  static std::shared_ptr<grammar::catalogue const> catalogue;
  static plist::array languages;
  plist::array const& present = manager.languages();
  if (catalogue == nullptr || languages != present) {
    languages = present;
    catalogue = std::make_shared<grammar::catalogue const>(
        entries_of(manager.bundleItemsOfKind("language")));
  }
  return catalogue;
}
