#include "bundle_fixture.h"

#include "bundles/files/item_file.h"
#include "path/tree.h"

namespace {

constexpr char const* shipped = "share/Bundles/Demo.qnbundle/";
constexpr char const* own = "data/Quirnote/Bundles/Demo.qnbundle/";

class bundle_layers : public bundle_test {
 protected:
  bundle_layers() {
    put(shipped + std::string("info.plist"), "{ uuid = B; name = Demo; }");
    put(shipped + std::string("Snippets/one.plist"),
        "{ uuid = S; name = One; tabTrigger = t; content = shipped; other = x; }");
    put(shipped + std::string("Snippets/two.qnSnippet"), "{ uuid = T; name = Two; content = y; }");
  }
};

}  // namespace

TEST_F(bundle_layers, edits_are_stored_as_changes_that_survive_an_update) {
  auto const item = manager().bundleItemForUUID("S");
  ASSERT_NE(item, nullptr);
  EXPECT_EQ(item->tabTrigger(), "t");
  item->setContentValueForKey("mine", "content");
  item->setTabTrigger("trigger");
  item->setContentValueForKey({}, "other");
  manager().saveChanges();
  EXPECT_FALSE(manager().isModified());
  plist::value const delta = get(folder / (own + std::string("Snippets/One.qnDelta")));
  EXPECT_EQ(delta["changed"],
            plist::value(plist::convert("{ content = mine; tabTrigger = trigger; }")));
  EXPECT_EQ(delta["deleted"], plist::value(plist::array{"other"}));
  EXPECT_EQ(get(folder / (own + std::string("info.plist")))["changed"],
            plist::value(plist::dictionary()));

  // The shipped file changes, and both changes are seen.
  put(shipped + std::string("Snippets/one.plist"),
      "{ uuid = S; name = New; tabTrigger = t; content = shipped; }");
  std::filesystem::remove(folder / (shipped + std::string("Snippets/two.qnSnippet")));
  restart();
  EXPECT_EQ(text_of("S", "content"), "mine");
  EXPECT_EQ(manager().bundleItemForUUID("S")->tabTrigger(), "trigger");
  EXPECT_EQ(manager().bundleItemForUUID("S")->name(), "New");
  EXPECT_EQ(text_of("T", "content"), "none");
  ASSERT_EQ(manager().bundles().size(), 1u);
  EXPECT_EQ(manager().bundles()[0]->bundlePaths().front(),
            folder / "data/Quirnote/Bundles/Demo.qnbundle");

  // A second edit stays a change of the shipped file.
  manager().bundleItemForUUID("S")->setContentValueForKey("again", "content");
  manager().saveChanges();
  EXPECT_EQ(get(folder / (own + std::string("Snippets/One.qnDelta")))["changed"]["content"],
            plist::value("again"));

  std::filesystem::remove_all(folder / own);
  restart();
  EXPECT_EQ(text_of("S", "content"), "shipped");
}

TEST_F(bundle_layers, tombstones) {
  manager().removeBundleItem("T");
  manager().saveChanges();
  EXPECT_TRUE(exists(shipped + std::string("Snippets/two.qnSnippet")));
  restart();
  EXPECT_EQ(text_of("T", "content"), "none");
  EXPECT_EQ(manager().bundleForUUID("B")->deleted(), strings{"T"});
  // Installing it again lifts the tombstone.
  manager().installBundleItemOfKind(folder / (shipped + std::string("Snippets/two.qnSnippet")),
                                    bundles::item_kind::snippet);
  EXPECT_EQ(text_of("T", "content"), "y");
  EXPECT_TRUE(manager().bundleForUUID("B")->deleted().empty());

  // What was the user's alone leaves none, and goes to the trash.
  auto item = BundleItem::bundleItemWithContent(
      manager(), {{"uuid", "N"}, {"name", ""}, {"content", "mine"}}, bundles::item_kind::snippet);
  manager().addBundleItem(item);
  manager().bundleForUUID("B")->placeAfter(*item, nullptr);
  manager().saveChanges();
  ASSERT_TRUE(exists(own + std::string("Snippets/untitled.qnSnippet")));
  restart();
  manager().removeBundleItem("N");
  manager().saveChanges();
  EXPECT_FALSE(exists(own + std::string("Snippets/untitled.qnSnippet")));
  EXPECT_TRUE(exists("data/Trash/files/untitled.qnSnippet"));
  EXPECT_TRUE(manager().bundleForUUID("B")->deleted().empty());
}

TEST_F(bundle_layers, orphans_and_faults_cost_only_themselves) {
  put(own + std::string("info.plist"), "{ uuid = B; isDelta = 1; changed = { name = Mine; }; }");
  put(own + std::string("Snippets/o.qnDelta"),
      "{ uuid = O; isDelta = 1; changed = { name = x; }; }");
  put(shipped + std::string("Snippets/three.plist"),
      "{ uuid = W; name = (a); tabTrigger = {}; scope = 3; }");
  put(shipped + std::string("Snippets/four.plist"), "{ uuid = (); name = x; }");
  put(shipped + std::string("Snippets/.hidden.plist"), "{ uuid = H; }");
  put(shipped + std::string("Snippets/readme.txt"), "{ uuid = R; }");
  folder.write(shipped + std::string("Snippets/five.plist"), "<plist><dict>");
  put("machine/Bundles/Bad.qnbundle/info.plist", "( a )");
  put("machine/Bundles/Alone.qnbundle/info.plist", "{ uuid = A; isDelta = 1; }");
  std::string uuids;
  std::string const told = errors_of([&] {
    manager().reloadBundles();
    for (auto const& item : manager().bundleItems()) uuids += item->UUID();
  });
  for (char const* part :
       {"three.plist: name: is not a string", "four.plist: no uuid",
        "five.plist:1:", "Bad.qnbundle/info.plist: the property list is no dictionary"})
    EXPECT_NE(told.find(part), std::string::npos) << part << " in " << told;
  EXPECT_EQ(uuids, "SWT");
  ASSERT_EQ(manager().bundles().size(), 1u);
  EXPECT_EQ(manager().bundles()[0]->name(), "Mine");
}

TEST_F(bundle_layers, disabled_and_deleted) {
  auto& defaults = platform::user_defaults::standard();
  defaults.set("WynBundleManagerDisabledBundles", plist::array{"B"});
  EXPECT_TRUE(manager().bundles().empty());
  EXPECT_EQ(manager().allBundlesOnDisk().size(), 1u);
  manager().installBundle(folder / "share/Bundles/Demo.qnbundle");
  EXPECT_EQ(manager().bundles().size(), 1u);
  manager().removeBundle("B");
  EXPECT_TRUE(exists(shipped));
  restart();
  EXPECT_TRUE(manager().bundles().empty());
  EXPECT_TRUE(manager().allBundlesOnDisk().empty());
}

TEST_F(bundle_layers, installing) {
  put("download/Demo.qnbundle/info.plist", "{ uuid = B; name = 'De/mo'; }");
  put("download/Demo.qnbundle/Snippets/one.plist", "{ uuid = S; name = One; content = update; }");
  put("download/broken.qnbundle/info.plist", "{ uuid = X; }");
  put("download/x.qnSnippet", "{ uuid = X; isDelta = 1; name = x; }");
  put("download/new.qnsnippet", "{ uuid = N; name = 'a/b.c'; content = new; bundleUUID = B; }");
  manager().bundleItemForUUID("S")->setContentValueForKey("mine", "other");
  EXPECT_FALSE(manager().canHandleFile(folder / "download/readme.txt"));
  for (char const* name : {"Demo.qnbundle", "broken.qnbundle", "x.qnSnippet", "a.qnTemplate"})
    EXPECT_TRUE(manager().canHandleFile(folder / ("download/" + std::string(name))));
  EXPECT_EQ(alerts(), (strings{"Update Bundle", "Bundle is Corrupt", "Bundle Item is Incomplete",
                               "Installing Template Failed"}));
  EXPECT_EQ(text_of("S", "content"), "shipped");  // the safe answer

  desktop.alerts().answer("Update Bundle", "Update");
  manager().installBundle(folder / "download/Demo.qnbundle");
  manager().installBundle(folder / "download/Demo.qnbundle");  // over itself
  EXPECT_TRUE(exists("data/Quirnote/Pristine Copy/Bundles/De:mo.qnbundle/info.plist"));
  EXPECT_TRUE(exists("data/Trash/files/De:mo.qnbundle"));
  EXPECT_EQ(text_of("S", "content"), "update");
  EXPECT_EQ(text_of("S", "other"), "mine");

  // No part of what can't be copied whole stays, and the old one does.
  folder.write("download/Demo.qnbundle/large", std::string(100000, 'x'));
  rlimit const all{RLIM_INFINITY, RLIM_INFINITY}, little{50000, RLIM_INFINITY};
  auto const former = std::signal(SIGXFSZ, SIG_IGN);
  ::setrlimit(RLIMIT_FSIZE, &little);
  alerts();
  manager().installBundle(folder / "download/Demo.qnbundle");
  ::setrlimit(RLIMIT_FSIZE, &all);
  std::signal(SIGXFSZ, former);
  EXPECT_EQ(alerts(), (strings{"Update Bundle", "Error Installing Bundle"}));
  using entries = std::filesystem::directory_iterator;
  entries const installed(folder / "data/Quirnote/Pristine Copy/Bundles");
  EXPECT_EQ(std::distance(begin(installed), end(installed)), 1);
  EXPECT_FALSE(exists("data/Quirnote/Pristine Copy/Bundles/De:mo.qnbundle/large"));
  EXPECT_EQ(text_of("S", "content"), "update");
  std::filesystem::remove(folder / "download/Demo.qnbundle/large");
  manager().installBundle(folder / "download/Demo.qnbundle");

  EXPECT_FALSE(manager().canHandleFile(folder / (shipped + std::string("Snippets/two.qnSnippet"))));
  manager().canHandleFile(folder / "download/new.qnsnippet");
  EXPECT_EQ(text_of("N", "content"), "new");
  EXPECT_TRUE(
      exists("data/Quirnote/Pristine Copy/Bundles/De:mo.qnbundle/Snippets/a:b_c.qnSnippet"));
}

TEST_F(bundle_layers, installing_brings_no_more_than_a_bundle) {
  std::string const from = "download/Odd.qnbundle/";
  put(from + "info.plist", "{ uuid = O; name = Odd; }");
  std::filesystem::create_directories(folder / (from + "Support/deep/er"));
  ASSERT_EQ(::chmod(folder.write(from + "Support/run", "#!/bin/sh").c_str(), 06755), 0);
  ASSERT_EQ(::mkfifo((folder / (from + "Support/pipe")).c_str(), 0600), 0);
  folder.write("outside", "not to be read");
  struct {
    char const *target, *name;
    bool kept;
  } const links[] = {
      {"run", "same", true},          {"deep/er", "inner", true},
      {"../info.plist", "up", true},  {"gone", "dangling", false},
      {"/etc/passwd", "root", false}, {"../../../outside", "out", false},
      {"../..", "deep/er/top", true}, {"deep/er/top/../..", "high", false},
      {"../..", "bundles", false},
  };
  for (auto const& link : links)
    ASSERT_EQ(::symlink(link.target, (folder / (from + "Support/" + link.name)).c_str()), 0);
  errors_of([&] { manager().installBundle(folder / "download/Odd.qnbundle"); });
  std::string const to = "data/Quirnote/Pristine Copy/Bundles/Odd.qnbundle/Support/";
  for (auto const& link : links)
    EXPECT_EQ(std::filesystem::is_symlink(folder / (to + link.name)), link.kept) << link.name;
  EXPECT_FALSE(exists(to + "pipe"));
  EXPECT_EQ(mode_of(folder / (to + "run")), 0755u);

  // What doesn't end is no item, and none of it is read.
  put(from + "Snippets/endless.plist", "{ uuid = E; name = Endless; }");
  manager().installBundle(folder / "download/Odd.qnbundle");
  std::string const item = folder / (from + "Snippets/endless.plist");
  ASSERT_EQ(::truncate(item.c_str(), off_t{6} << 30), 0);
  std::string const errors = errors_of([&] {
    EXPECT_FALSE(bundles::read_dictionary(item));
    EXPECT_FALSE(path::copy_tree(folder / from, folder / "copy"));
  });
  EXPECT_EQ(errors, "Quirnote: " + item + ": File too large\n");
}

TEST_F(bundle_layers, a_reader_finds_an_item_whole_while_it_is_written) {
  std::string const path = put("item.plist", "{ uuid = A; }");
  int const reader = ::open(path.c_str(), O_RDONLY);
  EXPECT_TRUE(bundles::write_dictionary(path, {{"uuid", "B"}}));
  char bytes[1000];
  std::string const read(bytes, static_cast<std::size_t>(::read(reader, bytes, sizeof bytes)));
  ::close(reader);
  EXPECT_EQ(plist::read_xml(read).value["uuid"], plist::value("A"));
  EXPECT_EQ(get(path)["uuid"], plist::value("B"));
}

TEST_F(bundle_layers, menu_structure) {
  std::string const line(36, '-');
  put(shipped + std::string("info.plist"),
      "{ uuid = B; name = Demo; ordering = ( T, S ); mainMenu = { items = ( S, '" + line + "', '" +
          line +
          "', G, S, gone ); excludedItems = ( gone ); submenus = { G = { name = Group; "
          "items = ( T, S ); }; H = { name = Empty; items = ( ); }; }; }; }");
  put(shipped + std::string("Commands/c.plist"), "{ uuid = C; name = C; }");
  manager().reloadBundles();
  auto const bundle = manager().bundleForUUID("B");
  EXPECT_EQ(bundle->flatMenu(), (strings{"S", line, line, line, "T", line, line, line, "C"}));
  EXPECT_TRUE(bundle->menuStructure()["excludedItems"].elements().empty());
  EXPECT_EQ(bundle->bundleItems().front()->UUID(), "T");
  bundle->setMenuStructure(bundle->menuStructure());
  EXPECT_FALSE(bundle->isModified());
  manager().removeBundleItem("T");
  EXPECT_EQ(bundle->ordering(), strings{"S"});
  EXPECT_TRUE(bundle->menuStructure()["submenus"]["G"]["items"].elements().empty());
}

TEST_F(bundle_layers, templates) {
  put(shipped + std::string("Templates/Page.qnTemplate/info.plist"), "{ uuid = P; name = Page; }");
  folder.write(shipped + std::string("Templates/Page.qnTemplate/b.txt"), "b");
  folder.write(shipped + std::string("Templates/Page.qnTemplate/A.txt"), "a");
  manager().reloadBundles();
  auto const item = manager().bundleItemForUUID("P");
  ASSERT_EQ(item->templateFiles().size(), 2u);
  EXPECT_EQ(item->templateFiles()[0]->name(), "A.txt");
  item->templateFiles()[1]->setContent("changed");
  EXPECT_FALSE(item->templateFiles()[1]->setName("A.txt"));
  EXPECT_EQ(item->newTemplateFile()->name(), "template_in.txt");
  EXPECT_EQ(item->newTemplateFile()->name(), "template_in_2.txt");
  manager().saveChanges();
  std::string const local = folder / (own + std::string("Templates/Page.qnDelta/"));
  EXPECT_EQ(temporary_folder::read(local + "b.txt"), "changed");
  EXPECT_EQ(temporary_folder::read(local + "A.txt"), "a");
  // What somebody else has put there isn't replaced, whatever it is.
  std::filesystem::create_symlink("nowhere", local + "taken");
  EXPECT_FALSE(item->templateFiles()[0]->setName("taken"));
  EXPECT_EQ(std::filesystem::read_symlink(local + "taken"), "nowhere");
  std::filesystem::remove(local + "taken");
  EXPECT_EQ(restart().bundleItemForUUID("P")->templateFiles().size(), 4u);
}

TEST_F(bundle_layers, titles) {
  struct {
    char const *name, *without, *with;
  } const cases[] = {{"Comment Line / Selection", "Comment Line", "Comment Selection"},
                     {"Wrap / Selection in Tag", "Wrap in Tag", "Selection in Tag"},
                     {"Plain", "Plain", "Plain"}};
  for (auto const& c : cases) {
    auto const item = BundleItem::bundleItemWithContent(manager(), {{"name", c.name}},
                                                        bundles::item_kind::snippet);
    EXPECT_EQ(item->titleWithSelection(false), c.without);
    EXPECT_EQ(item->titleWithSelection(true), c.with);
  }
}

TEST_F(bundle_layers, default_bundle_and_moving) {
  auto const target = manager().defaultBundle();
  EXPECT_EQ(manager().defaultBundle(), target);
  manager().bundleItemForUUID("S")->setBundle(*target);
  auto const copy = manager().bundleItemForUUID("T")->createDuplicate();
  EXPECT_NE(copy->UUID(), "T");
  manager().saveChanges();
  restart();
  EXPECT_EQ(manager().bundleItemForUUID("S")->bundleUUID(), target->UUID());
  EXPECT_EQ(text_of("S", "content"), "shipped");
  EXPECT_EQ(text_of(copy->UUID(), "content"), "y");
  auto const items = manager().bundleForUUID("B")->bundleItems();
  ASSERT_EQ(items.size(), 2u);
  EXPECT_EQ(items[1]->UUID(), copy->UUID());  // after its original

  std::string const name = items[0]->writeToDirectory(folder / "out");
  EXPECT_TRUE(get(folder / ("out/" + name))["bundleUUID"]);
  EXPECT_EQ(manager().bundleForUUID("B")->writeToDirectory(folder / "out"), "Demo.qnbundle");
  EXPECT_FALSE(get(folder / "out/Demo.qnbundle/info.plist")["isDelta"]);
  EXPECT_TRUE(exists("out/Demo.qnbundle/Snippets/Two 2.qnSnippet"));
}

TEST_F(bundle_layers, a_save_that_fails_keeps_the_change) {
  std::filesystem::create_directory(folder / "data");
  folder.write("data/Quirnote", "in the way");
  auto const item = manager().bundleItemForUUID("S");
  item->setContentValueForKey("mine", "content");
  manager().saveChanges();
  EXPECT_TRUE(item->isModified());
  EXPECT_TRUE(manager().isModified());
  EXPECT_GT(desktop.beeps, 0);
  manager().reloadBundles();
  EXPECT_EQ(text_of("S", "content"), "mine");
  std::filesystem::remove(folder / "data/Quirnote");
  manager().saveChanges();
  EXPECT_EQ(text_of((restart(), "S"), "content"), "mine");

  // One without a file can be saved later, or removed as if it had never been.
  std::string const home = manager().bundleForUUID("B")->localPath();
  ASSERT_NE(home, "");
  std::ofstream(home + "/Macros") << "in the way";
  auto const macro = BundleItem::bundleItemWithContent(
      manager(), {{"name", "M"}, {"commands", plist::array{}}}, bundles::item_kind::macro);
  macro->setBundle(*manager().bundleForUUID("B"));
  manager().addBundleItem(macro);
  macro->saveChanges();
  EXPECT_TRUE(macro->isModified());
  EXPECT_NE(macro->saveFault().find(home + "/Macros: "), std::string::npos);
  EXPECT_EQ(macro->localPath(), "");
  desktop.beeps = 0;
  manager().removeBundleItem(macro->UUID());
  EXPECT_EQ(desktop.beeps, 0);
}

TEST_F(bundle_layers, the_first_of_two_with_one_uuid_goes_over_the_second) {
  put(shipped + std::string("Snippets/zwei.plist"), "{ uuid = T; name = Zwei; content = z; }");
  put("share/Bundles/E.qnbundle/info.plist", "{ uuid = B; name = Twin; }");
  put("share/Bundles/E.qnbundle/Snippets/e.plist", "{ uuid = E; name = E; content = e; }");
  ASSERT_EQ(manager().bundles().size(), 1u);
  EXPECT_EQ(manager().bundles()[0]->name(), "Demo");
  EXPECT_EQ(manager().bundleItems().size(), 3u);
  EXPECT_EQ(text_of("T", "content") + text_of("E", "content"), "ye");
}
