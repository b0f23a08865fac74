#include "bundles/item_menu.h"

#include "bundles/BundleManager.h"
#include "bundles/files/item_file.h"
#include "path/path.h"

#include <algorithm>
#include <map>

namespace bundles {
namespace {

using item_list = BundleManager::item_list;
using menu = std::vector<platform::menu_item>;

constexpr int max_depth = 20;  // of groups in each other
constexpr std::size_t numbered_entries = 10;

platform::menu_item separator() {
  platform::menu_item item;
  item.separator = true;
  return item;
}

bool by_name(std::shared_ptr<BundleItem> const& a, std::shared_ptr<BundleItem> const& b) {
  return caseInsensitiveCompare(a->name(), b->name()) < 0;
}

/// Makes the entries one by one, numbering those that can be chosen.
class choice_menu {
 public:
  explicit choice_menu(item_list const& items) : items_(items) {}

  void add_heading(std::string name) {
    platform::menu_item heading;
    heading.title = std::move(name);
    heading.enabled = false;
    entries.push_back(std::move(heading));
  }
  void add(std::shared_ptr<BundleItem> const& item, std::string title) {
    platform::menu_item entry;
    entry.title = std::move(title);
    entry.argument =
        static_cast<std::int64_t>(std::find(items_.begin(), items_.end(), item) - items_.begin());
    if (++count_ <= numbered_entries) entry.key = std::to_string(count_ % numbered_entries);
    entries.push_back(std::move(entry));
  }

  menu entries;

 private:
  item_list const& items_;
  std::size_t count_ = 0;
};

/// Those of one bundle: in the order of its menu, then the others.
void add_bundle(choice_menu& result, Bundle& bundle, item_list candidates, std::string_view indent,
                bool has_selection) {
  auto const add = [&](std::shared_ptr<BundleItem> const& item) {
    result.add(item, std::string(indent) + item->titleWithSelection(has_selection, false));
  };
  bool after_item = false, saw_separator = false, pending_separator = false;
  for (std::string const& uuid : bundle.flatMenu()) {
    bool const is_separator = uuid == menu_separator;
    if (is_separator && saw_separator) continue;
    auto const found = std::find_if(candidates.begin(), candidates.end(),
                                    [&](auto const& item) { return item->UUID() == uuid; });
    if (found == candidates.end()) {
      bool const separates = is_separator && after_item;
      saw_separator = separates;
      if (separates)
        pending_separator = true;
      else
        after_item = false;
      continue;
    }
    if (std::exchange(pending_separator, false)) result.entries.push_back(separator());
    add(*found);
    candidates.erase(found);
    after_item = true;
    saw_separator = false;
  }
  for (auto const& item : bundle.bundleItems())
    if (std::find(candidates.begin(), candidates.end(), item) != candidates.end()) add(item);
}

platform::menu_item entry_for(BundleItem const& item, bool has_selection) {
  platform::menu_item entry;
  entry.title = item.titleWithSelection(has_selection, false);
  entry.selector = "executeBundleItem:";
  entry.argument = item.UUID();
  entry.key = item.keyEquivalent();
  entry.trigger = item.tabTrigger();
  return entry;
}

menu submenu(BundleManager& manager, plist::value const& structure, plist::value const& group,
             bool has_selection, int depth) {
  menu result;
  for (std::string const& uuid : bundles::string_array(group, "items")) {
    plist::value const& inner = structure["submenus"][uuid];
    if (uuid == menu_separator) {
      // None at the top, and never two in a row.
      if (!result.empty() && !result.back().separator) result.push_back(separator());
    } else if (inner.as_dictionary()) {
      platform::menu_item entry;
      entry.title = inner["name"].string_or("untitled");
      if (depth < max_depth)
        entry.items = submenu(manager, structure, inner, has_selection, depth + 1);
      if (!entry.items.empty()) result.push_back(std::move(entry));
    } else if (auto const item = manager.bundleItemForUUID(uuid)) {
      result.push_back(entry_for(*item, has_selection));
    }
  }
  if (!result.empty() && result.back().separator) result.pop_back();
  return result;
}

}  // namespace

menu menu_for_choice(BundleManager& manager, item_list const& items, bool has_selection) {
  choice_menu result(items);
  bool const are_languages = std::all_of(items.begin(), items.end(), [](auto const& item) {
    return item->kind() == item_kind::language;
  });
  if (are_languages) {
    item_list sorted = items;
    std::stable_sort(sorted.begin(), sorted.end(), by_name);
    for (auto const& item : sorted) result.add(item, item->name());
    return result.entries;
  }
  std::map<std::string, item_list> of_bundle;
  for (auto const& item : items) of_bundle[item->bundleUUID()].push_back(item);
  bool const has_headings = of_bundle.size() > 1;
  for (auto const& bundle : manager.bundles()) {
    auto const found = of_bundle.find(bundle->UUID());
    if (found == of_bundle.end()) continue;
    if (has_headings) result.add_heading(bundle->name());
    add_bundle(result, *bundle, found->second, has_headings ? "  " : "", has_selection);
  }
  return result.entries;
}

menu bundles_menu(BundleManager& manager, bool has_selection) {
  menu result;
  for (auto const& bundle : manager.bundlesWithItemsOfKinds(
           {item_kind::command, item_kind::macro, item_kind::snippet})) {
    platform::menu_item entry;
    entry.title = bundle->name();
    plist::value const structure = bundle->menuStructure();
    entry.items = submenu(manager, structure, structure, has_selection, 0);
    if (!entry.items.empty()) result.push_back(std::move(entry));
  }
  return result;
}

menu templates_menu(BundleManager& manager) {
  menu result;
  for (auto const& bundle : manager.bundlesWithItemsOfKinds({item_kind::file_template})) {
    platform::menu_item entry;
    entry.title = bundle->name();
    for (auto const& item : bundle->bundleItemsOfKind(item_kind::file_template))
      entry.items.push_back(entry_for(*item, false));
    result.push_back(std::move(entry));
  }
  return result;
}

}  // namespace bundles
