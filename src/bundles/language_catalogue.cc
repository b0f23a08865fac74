#include "bundles/language_catalogue.h"

#include <mutex>
#include <optional>

#include "bundles/BundleManager.h"

namespace bundles {
namespace {

/// A grammar that is read when it is needed, perhaps on a tokenizer's thread.
class grammar_source {
 public:
  grammar_source(BundleItem& item) : paths_(item.sourcePaths()) {
    // What the user changes stands in no file yet.
    if (item.isModified()) content_ = item.content();
  }

  plist::value content() {
    std::lock_guard const lock(mutex_);
    if (!content_) content_ = BundleItem::contentOfPaths(item_kind::language, paths_);
    return *content_;
  }
  /// Whether it is, or will be, what the item has now.
  bool holds_for(BundleItem& item) {
    if (paths_ != item.sourcePaths()) return false;
    std::lock_guard const lock(mutex_);
    return content_ ? *content_ == item.content() : !item.isModified();
  }

 private:
  std::vector<std::string> paths_;
  std::mutex mutex_;
  std::optional<plist::value> content_;
};

struct known_languages {
  unsigned long revision = 0;
  plist::array entries;
  std::vector<std::shared_ptr<grammar_source>> sources;
  std::shared_ptr<grammar::catalogue const> catalogue;
};

bool holds(known_languages const& known, BundleManager& manager) {
  auto const& items = manager.bundleItemsOfKind(item_kind::language);
  if (known.catalogue == nullptr || known.entries != manager.languageEntries()) return false;
  for (std::size_t n = 0; n < items.size(); ++n)
    if (!known.sources[n]->holds_for(*items[n])) return false;
  return true;
}

}  // namespace

std::shared_ptr<grammar::catalogue const> language_catalogue(BundleManager& manager) {
  static known_languages known;
  if (known.revision == manager.revision()) return known.catalogue;
  if (!holds(known, manager)) {
    known = {0, manager.languageEntries(), {}, nullptr};
    std::vector<grammar::catalogue::entry> entries;
    for (auto const& item : manager.bundleItemsOfKind(item_kind::language)) {
      auto const& source = known.sources.emplace_back(std::make_shared<grammar_source>(*item));
      entries.push_back({item->languageEntries()["scopeName"].string_or(""), item->name(),
                         item->sourcePath(), [source] { return source->content(); }});
    }
    known.catalogue = std::make_shared<grammar::catalogue const>(std::move(entries));
  }
  known.revision = manager.revision();
  return known.catalogue;
}

}  // namespace bundles
