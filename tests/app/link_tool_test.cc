#include "app/link_tool.h"

#include "app_fixture.h"

using namespace app;

// The link by which terminals find the command-line tool.
namespace {

TEST(link_tool, what_login_files_print_is_no_folder) {
  std::string const mark = "===== QUIRNOTE MAGIC =====\n";
  EXPECT_EQ(folders_in("/news/bin\n" + mark + "/bin\nbin\n\n/usr/bin\n"),
            strings({"/bin", "/usr/bin"}));
  EXPECT_EQ(folders_in(mark + "/old/bin\n" + mark + "/bin"), strings({"/bin"}));
  EXPECT_EQ(folders_in("/bin\n"), strings());
}

TEST(link_tool, takes_the_place_of_none_but_its_like) {
  temporary_folder folder;
  std::string const tool = folder.write("quirn", ""), link = folder / "link";
  auto const target = [&] { return std::filesystem::read_symlink(link).string(); };
  EXPECT_EQ(make_link(tool, link), "");
  EXPECT_EQ(target(), tool);
  for (std::string const& former : {folder / "gone", tool}) {
    std::filesystem::remove(link);
    std::filesystem::create_symlink(former, link);
    EXPECT_EQ(make_link("/new/quirn", link), "");
    EXPECT_EQ(target(), "/new/quirn");
  }
  std::filesystem::remove(link);
  std::filesystem::create_symlink(folder.write("other", ""), link);
  EXPECT_NE(make_link(tool, link), "");
  EXPECT_EQ(target(), folder / "other");
  EXPECT_NE(make_link(tool, folder / "other"), "");
  EXPECT_NE(make_link(tool, folder / "none/quirn"), "");
  EXPECT_EQ(folder.names(), std::set<std::string>({"link", "other", "quirn"}));
}

TEST_F(app_test, a_link_follows_the_tool_only_when_that_is_gone) {
  std::string const link = folder / "quirn";
  auto const made_for = [&](std::string const& tool) {
    std::filesystem::remove(link);
    std::filesystem::create_symlink(tool, link);
    defaults().set("WynEnhancedTerminalUsage",
                   plist::dictionary{{"didCreateLink", true}, {"linkPath", link}, {"path", tool}});
    update_link_to_tool();
    return std::filesystem::read_symlink(link).string() == tool;
  };
  EXPECT_TRUE(made_for("/bin/true"));
  EXPECT_FALSE(made_for(folder / "gone"));
  EXPECT_FALSE(defaults().dictionary("WynEnhancedTerminalUsage")["path"] ==
               plist::value(folder / "gone"));
}

}  // namespace
