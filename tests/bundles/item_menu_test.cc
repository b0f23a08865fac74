#include "bundles/item_menu.h"
#include "bundles/bundle_fixture.h"
#include "bundles/item_view.h"

#include <functional>

// The menu in which one of several items is chosen, and what a key press does with the choice.
namespace {

constexpr char const* separator = "------------------------------------";

/// Takes snippets at a place in C, and chooses the entry with the key `choice`, if any.
class choosing_view final : public bundles::item_view, public platform::responder {
 public:
  choosing_view() {
    addMethod("insertSnippetWithOptions:", [this](plist::value const& options) {
      done.push_back(options["content"].string_or(""));
      if (while_done) while_done();
      return plist::value();
    });
  }
  std::string scopeAtCaret() const override { return "source.c"; }
  bool hasSelection() const override { return false; }
  platform::responder& itemResponder() override { return *this; }
  std::optional<std::size_t> chooseFromMenu(std::vector<platform::menu_item> const& items,
                                            bool) override {
    ++menus;
    for (std::size_t number = 0; number < items.size(); ++number)
      if (!choice.empty() && items[number].key == choice) return number;
    return std::nullopt;
  }

  std::string choice;
  strings done;
  int menus = 0;
  std::function<void()> while_done;
};

class item_menu : public bundle_test {
 protected:
  /// The items of a menu are given one after the other, "-" for a line.
  void bundle(std::string const& name, strings const& menu) {
    std::string items;
    for (std::string const& item : menu)
      items += "'" + (item == "-" ? std::string(separator) : item) + "', ";
    put("share/Bundles/" + name + ".qnbundle/info.plist", "{ name = '" + name + "'; uuid = '" +
                                                              name + "'; mainMenu = { items = (" +
                                                              items + "); }; }");
  }
  void item(std::string const& bundle, std::string const& uuid, std::string const& more = "") {
    put("share/Bundles/" + bundle + ".qnbundle/Snippets/" + uuid + ".qnSnippet",
        "{ name = '" + uuid + "'; uuid = '" + uuid + "'; content = '" + uuid + "'; " + more + " }");
  }
  /// Each entry as its key and its title, "-" for a line, "# " before what can't be chosen.
  strings drawn(strings const& uuids) {
    BundleManager::item_list items;
    for (std::string const& uuid : uuids) items.push_back(manager().bundleItemForUUID(uuid));
    strings result;
    for (platform::menu_item const& entry : bundles::menu_for_choice(manager(), items, false)) {
      if (entry.separator) {
        result.push_back("-");
      } else {
        result.push_back((entry.enabled ? entry.key + " " : "# ") + entry.title);
        std::int64_t const place = entry.argument.integer_or(-1);
        EXPECT_EQ(place >= 0, entry.enabled);
        if (place >= 0) {
          EXPECT_TRUE(entry.title.ends_with(items[static_cast<std::size_t>(place)]->name()));
        }
      }
    }
    return result;
  }
  bool press(char16_t key, std::uint32_t modifiers = platform::modifier::command) {
    return manager().shouldSwallowEvent({{key}, {key}, modifiers, {}}, view);
  }

  choosing_view view;
};

TEST_F(item_menu, lines_stand_where_the_bundle_has_them_between_candidates) {
  struct {
    strings menu, drawn;
  } const cases[] = {
      {{"a", "b"}, {"1 a", "2 b"}},
      {{"b", "-", "a"}, {"1 b", "-", "2 a"}},
      {{"-", "a", "-", "-", "b", "-"}, {"1 a", "-", "2 b"}},
      {{"a", "-", "x", "b"}, {"1 a", "-", "2 b"}},
      {{"a", "x", "-", "b"}, {"1 a", "2 b"}},
      {{"a", "-", "x", "-", "b"}, {"1 a", "-", "2 b"}},
      {{"x", "-", "a", "b"}, {"1 a", "2 b"}},
      {{"b"}, {"1 b", "2 a"}},
      {{"none", "-", "b", "-", "a", "a"}, {"1 b", "-", "2 a"}},
      {{}, {"1 a", "2 b"}},
  };
  for (auto const& [menu, expected] : cases) {
    bundle("A", menu);
    for (char const* uuid : {"a", "b", "x"}) item("A", uuid);
    restart();
    EXPECT_EQ(drawn({"b", "a"}), expected) << testing::PrintToString(menu);
  }
}

TEST_F(item_menu, several_bundles_have_headings_and_ten_entries_have_digits) {
  bundle("Zoo", {});
  bundle("apes", {});
  strings const zoo = {"z01", "z02", "z03", "z04", "z05", "z06", "z07", "z08", "z09", "z10"};
  for (std::string const& uuid : zoo) item("Zoo", uuid);
  strings all = zoo;
  for (char const* uuid : {"a1", "a2"}) item("apes", uuid), all.push_back(uuid);
  EXPECT_EQ(drawn(all),
            (strings{"# apes", "1   a1", "2   a2", "# Zoo", "3   z01", "4   z02", "5   z03",
                     "6   z04", "7   z05", "8   z06", "9   z07", "0   z08", "   z09", "   z10"}));
  EXPECT_EQ(drawn({"z02", "z01"}), (strings{"1 z01", "2 z02"}));
}

TEST_F(item_menu, languages_are_listed_by_name_alone) {
  for (std::string const name : {"b", "A", "c"}) {
    bundle("in " + name, {});
    put("share/Bundles/in " + name + ".qnbundle/Syntaxes/l.qnLanguage",
        "{ name = '" + name + "'; uuid = '" + name + "'; scopeName = 'source.x'; }");
  }
  EXPECT_EQ(drawn({"c", "b", "A"}), (strings{"1 A", "2 b", "3 c"}));
}

TEST_F(item_menu, a_key_executes_what_fits_best_or_is_chosen) {
  bundle("A", {});
  item("A", "one", "keyEquivalent = '@1';");
  item("A", "other", "keyEquivalent = '@1'; scope = 'text';");
  item("A", "html", "keyEquivalent = '@2'; scope = 'text';");
  item("A", "twin", "keyEquivalent = '@3'; scope = 'source';");
  item("A", "twin2", "keyEquivalent = '@3'; scope = 'source';");
  item("A", "worse", "keyEquivalent = '@3';");
  put("share/Bundles/A.qnbundle/Commands/c.qnCommand",
      "{ name = c; uuid = c; keyEquivalent = '@4'; command = x; }");
  struct {
    char16_t key;
    char const* choice;
    bool swallowed;
    strings done;
    int menus;
  } const cases[] = {{u'0', "", false, {}, 0}, {u'1', "", true, {"one"}, 0},
                     {u'2', "", false, {}, 0}, {u'3', "2", true, {"twin2"}, 1},
                     {u'3', "", true, {}, 1},  {u'3', "3", true, {}, 1},
                     {u'4', "1", false, {}, 0}};
  for (auto const& [key, choice, swallowed, done, menus] : cases) {
    view.choice = choice;
    view.done.clear();
    view.menus = 0;
    EXPECT_EQ(press(key), swallowed) << char(key);
    EXPECT_EQ(view.done, done) << char(key);
    EXPECT_EQ(view.menus, menus) << char(key);
  }
  EXPECT_FALSE(press(u'1', 0));

  // Meanwhile it is the current item, also of another one that it executes.
  strings current;
  view.while_done = [&] {
    current.push_back(manager().currentBundleItem()->UUID());
    if (current.size() > 1) return;
    manager().executeItem(manager().bundleItemForUUID("twin"), view);
    current.push_back(manager().currentBundleItem()->UUID());
  };
  press(u'1');
  EXPECT_EQ(current, (strings{"one", "twin", "one"}));
  EXPECT_EQ(manager().currentBundleItem(), nullptr);
}

}  // namespace
