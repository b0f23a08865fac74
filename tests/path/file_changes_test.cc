#include "path/file_changes.h"

#include "path/file_system.h"
#include "path/info.h"
#include "path/temporary_folder.h"
#include "test.h"

namespace {

using names = std::set<std::string>;

/// A folder for the test's files, and another that TMPDIR names.
class file_changes : public ::testing::Test {
 protected:
  file_changes() { setenv("TMPDIR", own.path().c_str(), 1); }
  ~file_changes() override { unsetenv("TMPDIR"); }

  temporary_folder folder, own;
};

TEST_F(file_changes, temp_makes_a_private_file) {
  EXPECT_EQ(path::temp(""), own.path());
  std::string const plain = path::temp("x"), other = path::temp("x"),
                    inner = path::temp("x.XXXXXX.y");
  EXPECT_NE(plain, other);
  EXPECT_EQ(plain.size(), (own / "x.123456").size());
  EXPECT_EQ(inner.size(), (own / "x.123456.y").size());
  EXPECT_TRUE(inner.ends_with(".y"));
  EXPECT_EQ(inner.find("XXXXXX"), inner.npos);
  for (auto const& path : {plain, other, inner}) EXPECT_EQ(mode_of(path), 0600u) << path;
  EXPECT_EQ(path::temp("missing/x"), "");
  EXPECT_EQ(own.names().size(), 3u);
}

TEST_F(file_changes, folders_are_made_and_removed) {
  EXPECT_TRUE(path::make_dir(folder / "a/b//c/"));
  EXPECT_TRUE(path::make_dir(folder / "a/b/c"));
  ASSERT_EQ(symlink("a", (folder / "link").c_str()), 0);
  EXPECT_TRUE(path::make_dir(folder / "link"));
  EXPECT_FALSE(path::make_dir(folder.write("file", "")));
  EXPECT_FALSE(path::make_dir(folder / "file/below"));
  EXPECT_FALSE(path::make_dir(""));
  std::string const deep = folder.path() + repeated("/a", 100'000);
  EXPECT_FALSE(path::make_dir(deep));
  EXPECT_EQ(path::resolve(deep), deep);

  folder.write("a/b/.hidden", "");
  ASSERT_EQ(symlink("../file", (folder / "a/to file").c_str()), 0);
  ASSERT_EQ(symlink("..", (folder / "a/to folder").c_str()), 0);
  EXPECT_FALSE(path::remove_dir(folder / "link"));
  EXPECT_FALSE(path::remove_dir(folder / "link/"));
  EXPECT_TRUE(path::remove(folder / "a"));
  EXPECT_EQ(folder.names(), (names{"file", "link"}));
  EXPECT_TRUE(path::remove(folder / "link"));
  EXPECT_FALSE(path::remove(folder / "link"));
  EXPECT_FALSE(path::remove(""));
  EXPECT_FALSE(path::remove_dir("/"));
  EXPECT_FALSE(path::remove_dir(folder / "file"));
  EXPECT_EQ(folder.names(), names{"file"});
}

TEST_F(file_changes, what_cannot_be_removed_stays_alone) {
  ASSERT_TRUE(path::make_dir(folder / "a/mounted"));
  if (mount("none", (folder / "a/mounted").c_str(), "tmpfs", 0, nullptr) != 0)
    GTEST_SKIP() << "no right to mount";
  folder.write("a/z", "");
  EXPECT_FALSE(path::remove(folder / "a"));
  EXPECT_EQ(umount((folder / "a/mounted").c_str()), 0);
  EXPECT_FALSE(path::exists(folder / "a/z"));
  EXPECT_TRUE(path::exists(folder / "a/mounted"));
}

TEST_F(file_changes, info) {
  folder.write(".dot", "");
  ASSERT_EQ(symlink(".dot", (folder / "link").c_str()), 0);
  ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
  ASSERT_EQ(mknod((folder / "socket").c_str(), S_IFSOCK | 0600, 0), 0);
  using namespace path::flag;
  struct {
    std::string path;
    std::uint32_t flags;
  } const cases[] = {
      {".", meta_self},
      {"../..", meta_parent},
      {folder.path() + "/.", directory_bsd},
      {folder / ".dot", file_bsd | hidden_dotfile},
      {folder / ".missing", hidden_dotfile},
      {folder / "missing", 0},
      {folder / "link", symlink_bsd},
      {folder / "pipe", socket_bsd},
      {folder / "socket", 0},
      {"/dev", directory_bsd | hidden_volume},
      {"/dev/null", 0},
      {"/proc/", directory_bsd | hidden_volume},
      {"/proc/self/fd", directory_bsd},
      {"/", directory_bsd},
      {"/tmp", directory_bsd},
  };
  for (auto const& c : cases) EXPECT_EQ(path::info(c.path, 0xFFFFFF), c.flags) << c.path;
  EXPECT_EQ(hidden, 0x1203u);
}

}  // namespace
