#include "path/file_system.h"

#include "path/temporary_folder.h"
#include "test.h"

namespace {

TEST(file_system, exists) {
  temporary_folder folder;
  std::string const file = folder.write("a", "");
  ASSERT_EQ(symlink("nowhere", (folder / "broken").c_str()), 0);
  EXPECT_TRUE(path::exists(file));
  EXPECT_TRUE(path::exists(folder.path()));
  EXPECT_FALSE(path::exists(""));
  EXPECT_FALSE(path::exists(folder / "b"));
  EXPECT_FALSE(path::exists(folder / "broken"));
  EXPECT_EQ(path::device(file), path::device(folder.path()));
  EXPECT_EQ(path::device(folder / "b"), static_cast<dev_t>(-1));
}

TEST(file_system, content) {
  temporary_folder folder;
  std::string bytes(30000, 'x');
  bytes[8191] = '\0';
  EXPECT_EQ(path::content(folder.write("a", bytes)), bytes);
  EXPECT_EQ(path::content(folder.write("exactly one buffer", bytes.substr(0, 8192))).size(), 8192u);
  EXPECT_EQ(path::content(folder / "missing"), "");
  EXPECT_EQ(path::content(folder.path()), "");
  EXPECT_NE(path::content("/proc/self/status").find("Pid:"), std::string::npos);
}

TEST(file_system, cwd_and_home_are_absolute) {
  EXPECT_EQ(path::cwd(), std::filesystem::current_path().string());
  EXPECT_TRUE(path::home().starts_with('/'));
}

TEST(file_system, resolve) {
  temporary_folder folder;
  auto const link = [&](std::string const& target, std::string const& name) {
    ASSERT_EQ(symlink(target.c_str(), (folder / name).c_str()), 0);
  };
  std::filesystem::create_directories(folder / "real/deep");
  folder.write("real/deep/file", "");
  link("real", "folder");
  link("../real/deep/file", "real/up");
  link("folder/deep/file", "chain");
  link("one", "two");
  link("two", "one");
  link("gone", "broken");
  link(folder / "chain", "absolute");
  std::string detour;  // beyond the size of the first buffer
  while (detour.size() < 1500) detour += "real/../";
  link(detour + "real", "long");

  std::string const file = folder / "real/deep/file";
  EXPECT_EQ(path::resolve(folder / "folder/deep/file"), file);
  EXPECT_EQ(path::resolve(folder / "chain"), file);
  EXPECT_EQ(path::resolve(folder / "absolute"), file);
  EXPECT_EQ(path::resolve(folder / "folder/up"), file);
  EXPECT_EQ(path::resolve(folder / "broken"), folder / "gone");
  EXPECT_EQ(path::resolve(folder / "missing/file"), folder / "missing/file");
  EXPECT_EQ(path::resolve(folder / "long"), folder / "real");
  EXPECT_EQ(path::resolve_head(folder / "folder/deep/file"), folder / "folder/deep/file");
  EXPECT_EQ(path::resolve_head(folder / "chain"), folder / "folder/deep/file");
  EXPECT_EQ(path::resolve_head(folder / "absolute"), folder / "folder/deep/file");

  link("gone", "0");
  for (int n = 1; n < 20000; ++n) link(std::to_string(n - 1), std::to_string(n));
  EXPECT_EQ(path::resolve(folder / "39"), folder / "gone");
  for (auto* const resolve : {path::resolve, path::resolve_head})
    EXPECT_TRUE(resolve(folder / "19999").starts_with(folder / "199"));  // given up on the way

  std::string const ended = path::resolve(folder / "one");
  EXPECT_TRUE(ended == folder / "one" || ended == folder / "two") << ended;

  EXPECT_EQ(path::resolve("relative/../a"), "a");
  EXPECT_EQ(path::resolve("/"), "/");
  EXPECT_EQ(path::resolve(""), "");
}

TEST(file_system, standardize) {
  temporary_folder folder;
  std::filesystem::create_directories(folder / "a/b");
  ASSERT_EQ(symlink("a/b", (folder / "link").c_str()), 0);
  EXPECT_EQ(path::standardize(folder / "./link//file/"), folder / "link/file");
  EXPECT_EQ(path::standardize(folder / "a/../c"), folder / "c");
  EXPECT_EQ(path::standardize(folder / "link/../c"), folder / "a/c");
  EXPECT_EQ(path::standardize("/../x"), "/x");
  EXPECT_EQ(path::standardize("/"), "/");
  std::string const here = path::cwd();
  EXPECT_EQ(path::standardize("x\n"), here + "/x\n");
  std::filesystem::create_directory(folder / "gone");
  ASSERT_EQ(chdir((folder / "gone").c_str()), 0);
  std::filesystem::remove(folder / "gone");
  EXPECT_EQ(path::standardize("x"), "x");  // and not /x
  ASSERT_EQ(chdir(here.c_str()), 0);
  std::string const home = path::standardize("~");
  EXPECT_EQ(path::standardize("~/x"), home + "/x");
  EXPECT_EQ(path::standardize("/~/x"), "/~/x");
  EXPECT_EQ(path::abbreviate_with_tilde(home + "/x"), "~/x");
  EXPECT_EQ(path::abbreviate_with_tilde(home), "~");
  EXPECT_EQ(path::abbreviate_with_tilde(home + "x"), home + "x");
}

}  // namespace
