#include "bundle_fixture.h"

namespace {

class item_lookup : public bundle_test {
 protected:
  item_lookup() { put("share/Bundles/A.qnbundle/info.plist", "{ name = A; uuid = A; }"); }

  void snippet(std::string const& uuid, std::string const& keys) {
    put("share/Bundles/A.qnbundle/Snippets/" + uuid + ".qnSnippet",
        "{ name = " + uuid + "; uuid = " + uuid + "; content = x; " + keys + " }");
  }
  static strings uuids(BundleManager::item_list const& items) {
    strings result;
    for (auto const& item : items) result.push_back(item->UUID());
    return result;
  }
  strings by_trigger(std::string const& text, std::string const& scope = "") {
    return uuids(manager().bundleItemsForTabTrigger(text, scope));
  }
};

}  // namespace

TEST_F(item_lookup, only_the_longest_tab_trigger_counts) {
  snippet("foo", "tabTrigger = foo;");
  snippet("barfoo", "tabTrigger = barfoo;");
  snippet("dash", "tabTrigger = \"-o\";");
  snippet("accent", "tabTrigger = \"\xc3\xa9\";");
  struct {
    char const* text;
    strings items;
  } const cases[] = {
      {"barfoo", {"barfoo"}},
      {"foo", {"foo"}},
      {"xfoo", {}},
      {"1foo", {}},
      {"-foo", {"foo"}},
      {"_foo", {"foo"}},
      {"x barfoo", {"barfoo"}},
      {"\xc3\xa9"
       "foo",
       {}},
      {"", {}},
      {"fo", {}},
      {"fo-o", {"dash"}},
      {"a \xc3\xa9", {"accent"}},
      {"e\u0301foo", {}},
      {"\U0001d400foo", {}},
      {"\u2764\ufe0ffoo", {"foo"}},
      {"\U0001f600foo", {"foo"}},
  };
  for (auto const& c : cases) EXPECT_EQ(by_trigger(c.text), c.items) << c.text;
}

TEST_F(item_lookup, the_best_scope_wins_and_ties_stay) {
  snippet("any", "tabTrigger = x;");
  snippet("c", "tabTrigger = x; scope = \"source.c\";");
  snippet("string", "tabTrigger = x; scope = \"source.c string\";");
  snippet("twin", "tabTrigger = x; scope = \"source.c string\";");
  snippet("html", "tabTrigger = x; scope = text;");
  EXPECT_EQ(by_trigger("x", "source.c string.quoted"), (strings{"string", "twin"}));
  EXPECT_EQ(by_trigger("x", "source.c comment"), strings{"c"});
  EXPECT_EQ(by_trigger("x", "source.python"), strings{"any"});
  EXPECT_EQ(uuids(BundleManager::sortItemsAccordingToScope(manager().bundleItems(),
                                                           "source.c string.quoted")),
            (strings{"string", "twin", "c", "any"}));
}

TEST_F(item_lookup, keys_serve_the_keypad_too) {
  snippet("five", "keyEquivalent = \"@5\";");
  snippet("pad", "keyEquivalent = \"#@6\";");
  snippet("six", "keyEquivalent = \"@6\";");
  EXPECT_EQ(uuids(manager().bundleItemsForKeyString("#@5")), strings{"five"});
  EXPECT_EQ(uuids(manager().bundleItemsForKeyString("#@6")), strings{"pad"});
  EXPECT_EQ(uuids(manager().bundleItemsForKeyString("@6")), strings{"six"});
  EXPECT_EQ(uuids(manager().bundleItemsForKeyString("@7")), strings());
  EXPECT_EQ(uuids(manager().bundleItemsForKeyString("")), strings());
  auto const item = manager().bundleItemForUUID("six");
  item->setKeyEquivalent("@7");
  EXPECT_EQ(uuids(manager().bundleItemsForKeyString("@7")), strings{"six"});
}

TEST_F(item_lookup, a_dropped_file_has_commands_of_its_own_before_those_for_any) {
  auto const drop = [&](std::string const& uuid, std::string const& keys) {
    put("share/Bundles/A.qnbundle/DragCommands/" + uuid + ".qnDragCommand",
        "{ name = " + uuid + "; uuid = " + uuid + "; command = x; " + keys + " }");
  };
  drop("png", "draggedFileExtensions = ( png, gif );");
  drop("any", "draggedFileExtensions = ( \"*\" );");
  drop("none", "draggedFileExtensions = ( \"\" ); scope = text;");
  auto const dropped = [&](char const* file, char const* scope) {
    return uuids(manager().bundleItemsForFileDrop(file, scope));
  };
  EXPECT_EQ(dropped("/a/b.PNG", ""), strings{"png"});
  EXPECT_EQ(dropped("/a/b.c", ""), strings{"any"});
  EXPECT_EQ(dropped("/a/b", "text.html"), strings{"none"});
}
