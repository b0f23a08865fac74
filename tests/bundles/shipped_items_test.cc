#include "bundle_fixture.h"
#include "source_tree.h"

// What ships is told apart by its scopes: nobody is asked which of two items is meant.

namespace {

/// The scopes of every place in the files of tests/languages: "⟨", a name, a blank, what is inside
/// of it, "⟩".
std::set<std::string> all_scopes() {
  std::string const open = "\u27e8", close = "\u27e9";
  std::set<std::string> found;
  for (auto const& file :
       std::filesystem::recursive_directory_iterator(source_file("tests/languages"))) {
    if (file.path().extension() != ".scopes") continue;
    std::string const text = content_of_file(file.path());
    std::vector<std::string> path = {""};
    for (std::size_t at = 0; (at = text.find("\xe2\x9f", at)) != text.npos; at += 3) {
      if (text.compare(at, 3, close) == 0 && path.size() > 1) path.pop_back();
      if (text.compare(at, 3, open) != 0) continue;
      std::string const name = text.substr(at + 3, text.find(' ', at) - at - 3);
      path.push_back(path.back() + (path.size() > 1 ? " " : "") + name);
      found.insert(path.back());
    }
  }
  return found;
}

}  // namespace

TEST_F(bundle_test, shipped_items_are_told_apart_by_their_scopes) {
  BundleManager shipped({{}, source_file("share"), folder / "index"});
  auto const scopes = all_scopes();
  ASSERT_GT(scopes.size(), 1000u);
  std::map<std::string, BundleManager::item_list> by_trigger, by_key;
  for (auto const& item : shipped.bundleItems()) {
    if (!item->tabTrigger().empty()) by_trigger[item->tabTrigger()].push_back(item);
    if (!item->keyEquivalent().empty()) by_key[item->keyEquivalent()].push_back(item);
  }
  ASSERT_GT(by_trigger.size(), 100u);
  std::set<std::string> reached;
  auto const expect_one = [&](BundleManager::item_list const& items, std::string const& scope) {
    for (auto const& item : items) reached.insert(item->UUID());
    if (items.size() < 2) return;
    ADD_FAILURE() << items[0]->sourcePath() << "\n" << items[1]->sourcePath() << "\nin " << scope;
  };
  for (std::string const& scope : scopes) {
    for (auto const& [trigger, items] : by_trigger)
      expect_one(shipped.bundleItemsForTabTrigger(trigger, scope), scope);
    for (auto const& [key, items] : by_key)
      expect_one(shipped.bundleItemsForKeyString(key, scope), scope);
  }
  for (auto const* table : {&by_trigger, &by_key})
    for (auto const& [name, items] : *table)
      for (auto const& item : items)
        EXPECT_TRUE(reached.contains(item->UUID())) << item->sourcePath();
}
