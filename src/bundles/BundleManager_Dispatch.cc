#include <algorithm>
#include <map>

#include "bundles/BundleManager.h"
#include "bundles/files/item_kinds.h"
#include "grammar/scope_selector.h"
#include "platform/split.h"
#include "platform/unicode.h"
#include "platform/utf.h"
#include "text/cluster.h"

namespace {

using item_list = BundleManager::item_list;

/// By falling score, in their order where that is the same.
std::multimap<double, std::shared_ptr<BundleItem>> scored(item_list const& items,
                                                          std::string_view scope) {
  auto const names = platform::split(scope, ' ');
  std::multimap<double, std::shared_ptr<BundleItem>> result;
  for (auto const& item : items) {
    std::string const& selector = item->scopeSelector();
    double const score = selector.empty() ? 0 : scope::new_score_for_selector(selector, names, [&] {
      return item->sourcePath();
    });
    if (score > -0.5) result.emplace(1.0 - score, item);
  }
  return result;
}

unsigned char last_byte(std::string_view text) {
  return static_cast<unsigned char>(text.back());
}

/// A word trigger must not begin in the middle of a word, nor any trigger inside a character.
bool begins_inside_word(std::string_view text, std::string_view trigger) {
  std::u16string const before = unicode::to_utf16(text.substr(0, text.size() - trigger.size()));
  std::size_t const first = before.size();
  if (first == 0) return false;
  std::u16string const units = before + unicode::to_utf16(trigger);
  auto const is_alnum_at = [&](std::size_t at) {
    return unicode::is_alnum(unicode::code_point_at(units, at));
  };
  return !text::is_cluster_start(units, first) ||
         (is_alnum_at(first) && is_alnum_at(text::previous_cluster(units, first)));
}

}  // namespace

void BundleManager::makeDispatchTables() {
  if (hasDispatchTables_) return;
  itemsForKey_.clear();
  for (auto& items : itemsForTrigger_) items.clear();
  longestTabTrigger_ = 0;
  for (auto const& item : bundleItems()) {
    if (!item->keyEquivalent().empty()) itemsForKey_[item->keyEquivalent()].push_back(item);
    std::string const& trigger = item->tabTrigger();
    if (!trigger.empty()) itemsForTrigger_[last_byte(trigger)].push_back(item);
    longestTabTrigger_ = std::max(longestTabTrigger_, trigger.size());
  }
  hasDispatchTables_ = true;
}

item_list const& BundleManager::bundleItemsForKeyString(std::string_view key) {
  static item_list const none;
  makeDispatchTables();
  auto found = itemsForKey_.find(key);
  if (found == itemsForKey_.end() && key.size() > 1 && key.front() == '#')
    found = itemsForKey_.find(key.substr(1));
  return found == itemsForKey_.end() ? none : found->second;
}

item_list BundleManager::bundleItemsForKeyString(std::string_view key, std::string_view scope) {
  return filterItemsInScope(bundleItemsForKeyString(key), scope);
}

std::size_t BundleManager::longestTabTrigger() {
  makeDispatchTables();
  return longestTabTrigger_;
}

item_list BundleManager::bundleItemsForTabTrigger(std::string_view text,
                                                  std::optional<std::string_view> scope) {
  if (text.empty()) return {};
  makeDispatchTables();
  item_list found;
  std::size_t best = 1;
  for (auto const& item : itemsForTrigger_[last_byte(text)]) {
    std::string const& trigger = item->tabTrigger();
    if (trigger.size() < best || !text.ends_with(trigger) || begins_inside_word(text, trigger))
      continue;
    if (trigger.size() > best) found.clear();
    best = trigger.size();
    found.push_back(item);
  }
  return filterItemsInScope(found, scope);
}

item_list BundleManager::bundleItemsForMouseGesture(std::string_view gesture,
                                                    std::string_view scope) {
  item_list found;
  for (auto const& item : bundleItems())
    if (!gesture.empty() && item->mouseGesture() == gesture) found.push_back(item);
  return filterItemsInScope(found, scope);
}

bool BundleManager::hasMouseGestures() {
  auto const& items = bundleItems();
  return std::any_of(items.begin(), items.end(),
                     [](auto const& item) { return !item->mouseGesture().empty(); });
}

item_list BundleManager::bundleItemsForFileDrop(std::string_view path, std::string_view scope) {
  std::string const extension = bundles::lowercase_extension(path);
  item_list found;
  auto const lists = [](BundleItem const& item, std::string_view wanted) {
    auto const& all = item.draggedFileExtensions();
    return std::find(all.begin(), all.end(), wanted) != all.end();
  };
  for (auto const& item : bundleItemsOfKind(bundles::item_kind::drag_command))
    if (lists(*item, extension) || lists(*item, "*")) found.push_back(item);
  found = filterItemsInScope(found, scope);
  item_list exact;
  for (auto const& item : found)
    if (lists(*item, extension)) exact.push_back(item);
  return exact.empty() ? found : exact;
}

item_list BundleManager::filterItemsInScope(item_list const& items,
                                            std::optional<std::string_view> scope) {
  if (!scope) return items;
  auto const all = scored(items, *scope);
  item_list best;
  if (all.empty()) return best;
  for (auto const& [key, item] : all)
    if (key == all.begin()->first) best.push_back(item);
  return best;
}

item_list BundleManager::sortItemsAccordingToScope(item_list const& items, std::string_view scope) {
  item_list sorted;
  for (auto const& [key, item] : scored(items, scope)) sorted.push_back(item);
  return sorted;
}
