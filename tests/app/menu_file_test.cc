#include "app/menu_file.h"

#include "app_fixture.h"
#include "platform/menu.h"

using namespace app;

namespace {

class menu_file_test : public app_test {
 protected:
  // Those of the items that nobody can perform.
  std::vector<std::string> without_action(std::vector<platform::menu_item> const& items) {
    std::vector<std::string> result;
    for (platform::menu_item const& item : items) {
      for (std::string const& below : without_action(item.items)) result.push_back(below);
      auto* const first = &app().orderedControllers().front()->textView();
      if (!item.selector.empty() && !platform::target_for_selector(first, item.selector))
        result.push_back(item.selector);
    }
    return result;
  }
};

TEST_F(menu_file_test, faulty_ones_give_menus_that_save) {
  app().newDocument();
  std::string const whole = folder.read(source_file("share/menus.plist"));
  struct {
    char const* name;
    std::string contents, reason;
  } const cases[] = {
      {"empty", "", "line 1"},
      {"cut", whole.substr(0, whole.size() / 2), "line "},
      {"torn", "<plist><dict>\n<key>main</key></plist>", "line 2"},
      {"other", "<plist><array/></plist>", "it has no menu bar"},
      {"bare", "<plist><dict><key>main</key><array/></dict></plist>", "it has no menu bar"},
      {"missing", "", "No such file"},
  };
  for (auto const& c : cases) {
    std::string const path = folder.write(c.name, c.contents);
    if (std::string("missing") == c.name) std::remove(path.c_str());
    menu_file const menus = read_menu_file(path);
    EXPECT_NE(menus.fault.find(path), std::string::npos) << menus.fault;
    EXPECT_NE(menus.fault.find(c.reason), std::string::npos) << menus.fault;
    auto const items = platform::menu_from_value(menus.menus["main"]);
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0].items[3].selector, "saveDocument:");
    EXPECT_EQ(without_action(items), std::vector<std::string>());
  }
  EXPECT_EQ(read_menu_file(source_file("share/menus.plist")).fault, "");
}

TEST_F(menu_file_test, faults_are_told_in_the_window) {
  app().setMenuFault("why");
  app().didFinishLaunching();
  desktop.loop().run_for(0);
  EXPECT_EQ(alerts(), titles{"Menus Missing|Continue"});
}

}  // namespace
