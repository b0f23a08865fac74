#include "bundle_fixture.h"

#include <rapidcheck/gtest.h>

#include "plist/random_values.h"

namespace {

constexpr char const* snippets = "share/Bundles/Demo.qnbundle/Snippets";

class bundle_index : public bundle_test {
 protected:
  bundle_index() {
    put("share/Bundles/Demo.qnbundle/info.plist", "{ uuid = B; name = Demo; }");
    put(snippets + std::string("/a.plist"),
        "{ uuid = S; name = One; keyEquivalent = '$~@x'; scope = source; content = x; }");
    put("share/Bundles/Demo.qnbundle/DragCommands/d.plist",
        "{ uuid = D; name = Drop; draggedFileExtensions = ( png, '*' ); }");
    put("data/Quirnote/Bundles/x.qnbundle/info.plist", "{ uuid = B; isDelta = 1; }");
    put("data/Quirnote/Bundles/x.qnbundle/Snippets/a.plist",
        "{ uuid = S; isDelta = 1; changed = { name = Mine; content = y; }; deleted = ( scope ); }");
  }
  /// All that look-ups see.
  std::string listing() {
    std::string result;
    for (auto const& item : manager().bundleItems()) {
      result += item->UUID() + "|" + item->name() + "|" +
                std::string(bundles::name_of(item->kind())) + "|" + item->bundleUUID() + "|" +
                item->keyEquivalent() + "|" + item->scopeSelector() + "|";
      for (auto const& text : item->draggedFileExtensions()) result += text + ",";
      for (auto const& path : item->sourcePaths()) result += path + ",";
    }
    return result;
  }
  /// Changes a file in place, which the index is not to look at.
  void sabotage(std::string const& name) const { folder.write(name, "no property list"); }
};

}  // namespace

TEST_F(bundle_index, a_valid_index_is_all_that_is_read) {
  std::string const fresh = listing();
  EXPECT_NE(fresh.find("S|Mine|snippet|B|~$@x||"), std::string::npos) << fresh;
  manager().saveCache();
  sabotage(snippets + std::string("/a.plist"));
  restart();
  EXPECT_EQ(listing(), fresh);
  // Saving tells of what is changed in place.
  put(snippets + std::string("/a.plist"), "{ uuid = S; name = Two; }");
  manager().cache().invalidateCacheForPath(folder / snippets);
  EXPECT_NE((restart(), listing()), fresh);
}

TEST_F(bundle_index, one_that_is_damaged_is_made_anew) {
  std::string const fresh = listing();
  manager().saveCache();
  std::string const good = temporary_folder::read(folder / "index");
  std::string const old = bundles::index::pack_root("1", {{"path", {1, "block"}}});
  std::vector<std::string> damaged = {old, "", "\xC1", std::string(5000, '\x9F'), good + "x"};
  for (std::size_t cut = 0; cut < good.size(); cut += 1 + good.size() / 97)
    damaged.push_back(good.substr(0, cut));
  for (std::size_t at = 0; at < good.size(); at += 1 + good.size() / 97) {
    damaged.push_back(good);
    damaged.back()[at] = static_cast<char>(damaged.back()[at] ^ 0x55);
  }
  for (std::string const& bytes : damaged) {
    folder.write("index", bytes);
    BundleManager const fresh_manager(folders());
    EXPECT_FALSE(fresh_manager.bundles().empty());
  }
  folder.write("index", old);
  restart();
  EXPECT_EQ(listing(), fresh);
  manager().saveCache();
  EXPECT_EQ(temporary_folder::read(folder / "index").size(), good.size());
}

TEST_F(bundle_index, paths_that_nobody_asked_for_are_dropped) {
  manager();
  manager().saveCache();
  platform::user_defaults::standard().set("WynBundleManagerDisabledBundles", plist::array{"B"});
  restart().saveCache();
  EXPECT_EQ(temporary_folder::read(folder / "index").find("Snippets"), std::string::npos);
  EXPECT_EQ(CacheManager::lastDirectoryUpdateForPath(folder / "nowhere"),
            CacheManager::distantFuture);
}

TEST_F(bundle_index, bundles_that_vanish_while_running) {
  std::string const own = folder / "data/Quirnote/Bundles/x.qnbundle/";
  std::string const files[] = {own + "info.plist", own + "Snippets/a.plist"};
  std::string const before = temporary_folder::read(files[0]) + temporary_folder::read(files[1]);
  manager().saveCache();
  auto const item = restart().bundleItemForUUID("S");
  auto const bundle = manager().bundleForUUID("B");
  std::filesystem::rename(folder / "share", folder / "away");
  EXPECT_TRUE(item->content().entries().empty());
  item->setName("x");
  bundle->setName("y");
  manager().reloadBundles();
  EXPECT_EQ(manager().bundleForUUID("B"), nullptr);
  // The user's changes of it are still there when it comes back.
  EXPECT_EQ(temporary_folder::read(files[0]) + temporary_folder::read(files[1]), before);
  std::filesystem::rename(folder / "away", folder / "share");
  manager().reloadBundles();
  EXPECT_EQ(text_of("S", "content"), "y");
}

// The index still names a bundle whose info.plist has been broken in place.
TEST_F(bundle_index, a_broken_bundle_is_told_once_and_not_while_loading) {
  manager().saveCache();
  sabotage("share/Bundles/Demo.qnbundle/info.plist");
  restart();
  EXPECT_EQ(alerts(), strings());
  manager().allBundlesOnDisk();
  manager().reloadBundles();
  desktop.loop().run_for(1);
  EXPECT_EQ(alerts(), strings{"Error Loading Bundle"});
}

RC_GTEST_PROP(bundle_index_values, read_as_they_were_written, ()) {
  plist::value const value = random_values::value({});
  plist::value again;
  RC_ASSERT(bundles::index::unpack(bundles::index::pack(value, {}), {}, again));
  RC_ASSERT(plist::write_xml(again).text == plist::write_xml(value).text);  // for NaN
}
