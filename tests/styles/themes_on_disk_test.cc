#include "headless/headless_desktop.h"
#include "path/temporary_folder.h"
#include "platform/own_defaults.h"
#include "plist/text_reader.h"
#include "plist/xml_writer.h"
#include "source_tree.h"
#include "styles/WynThemeManager.h"
#include "styles/color_strings.h"
#include "styles/theme_watcher.h"
#include "styles/view_colors.h"
#include "test.h"

using namespace styles;

// Nothing that is drawn behind text makes it hard to read, in whatever colour of a theme.
TEST(shipped_themes, leave_text_readable_on_what_is_marked) {
  WynThemeManager const manager({source_file("share/Themes")});
  ASSERT_GE(manager.allThemes().size(), 8U);
  for (auto const& theme : manager.allThemes()) {
    auto const* const rules = theme.data["settings"].as_array();
    ASSERT_NE(rules, nullptr);
    view_colors const colors({}, rules->front()["settings"], true);
    EXPECT_GT(contrast(colors.current_match_edge, colors.background), 3.0) << theme.name();
    for (plist::value const& rule : *rules) {
      plist::value const& style = rule["settings"];
      auto const color = NSColorForKey(style, "foreground");
      if (!color || NSColorForKey(style, "background")) continue;
      for (auto const& behind :
           {colors.match, colors.current_match, colors.same_word, colors.bracket, colors.field})
        EXPECT_GT(contrast(*color, behind), 3.5)
            << theme.name() << ": " << rule["name"].string_or("");
    }
  }
}

// What stands in the folders of themes, and what happens there while the program runs.
TEST(themes_on_disk, are_picked_up) {
  own_defaults const own;
  auto& defaults = platform::user_defaults::standard();
  temporary_folder folder;
  headless::headless_desktop desktop;
  std::filesystem::create_directory(folder / "machine");
  auto const put = [&](char const* file, std::string const& text) {
    std::filesystem::create_directories(folder / "user");
    folder.write(file, plist::write_xml(plist::convert(text)).text);
  };
  put("machine/a.qnTheme", "{ uuid = A; name = Hidden; }");
  put("machine/b.plist", "{ uuid = B; name = Blue; settings = ( ); }");
  put("machine/d.qnTheme", "{ uuid = D; name = Deleted; }");
  put("machine/n.qnTheme", "{ name = Nameless; settings = x; }");
  put("machine/readme.txt", "{ name = no; }");
  put("user/a.qnTheme", "{ uuid = A; name = Own; }");
  defaults.set("WynThemeManagerDeletedThemes", plist::array{"D"});
  // The manager of the process would select a theme of its own in place of one that it doesn't
  // know.
  defaults.set("WynThemeManagerLightTheme", "B");
  defaults.set("WynThemeManagerFollowsDesktop", true);

  WynThemeManager manager({folder / "user", folder / "machine"});
  theme_watcher const watcher(manager);
  int told = 0;
  auto const token = platform::notification_center::standard().observe(
      WynThemeManager::did_change, [&](auto const&) { ++told; });
  auto const names = [&] {
    std::string result;
    for (auto const& theme : manager.allThemes()) result += theme.name() + " ";
    return result;
  };
  std::string const given = manager.allThemes()[1].uuid();
  struct {
    char const* what;
    std::function<void()> change;
    char const* names;
    int told;
  } const steps[] = {
      {"nothing", [] {}, "Blue Nameless Own ", 0},
      {"another rule",
       [&] { put("machine/b.plist", "{ uuid = B; name = Blue; settings = ( x ); }"); },
       "Blue Nameless Own ", 1},
      {"broken while it is being edited", [&] { folder.write("machine/b.plist", "<plist>"); },
       "Blue Nameless Own ", 0},
      {"another name",
       [&] { put("machine/b.plist", "{ uuid = B; name = Zinc; settings = ( x ); }"); },
       "Nameless Own Zinc ", 0},
      {"a new one", [&] { put("user/c.qnTheme", "{ uuid = C; name = Cyan; }"); },
       "Cyan Nameless Own Zinc ", 0},
      {"what a file of the user's hid", [&] { std::filesystem::remove(folder / "user/a.qnTheme"); },
       "Cyan Hidden Nameless Zinc ", 0},
  };
  for (auto const& step : steps) {
    told = 0;
    step.change();
    desktop.loop().run_for(2);
    EXPECT_EQ(names(), step.names) << step.what;
    ASSERT_NE(manager.selectedTheme(), nullptr);
    EXPECT_EQ(manager.selectedTheme()->uuid(), "B") << step.what;
    EXPECT_EQ(told, step.told) << step.what;
  }
  EXPECT_EQ(manager.allThemes()[2].uuid(), given);
}
