#include "path/file_changes.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "path/faulting_calls.h"
#include "path/file_system.h"
#include "path/info.h"
#include "path/intermediate.h"
#include "path/other_user.h"
#include "path/temporary_folder.h"

namespace {

using names = std::set<std::string>;

/// A folder for the test's files, and another that TMPDIR names.
class file_changes : public ::testing::Test {
 protected:
  file_changes() { setenv("TMPDIR", own.path().c_str(), 1); }
  ~file_changes() override { unsetenv("TMPDIR"); }

  static mode_t mode_of(std::string const& path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0 ? info.st_mode & 07777 : 0;
  }

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
  std::string deep = folder.path();
  for (int i = 0; i < 100'000; ++i) deep += "/a";
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

TEST_F(file_changes, content_is_replaced_and_the_rest_kept) {
  std::string const file = folder.write("file", "old");
  ASSERT_EQ(chmod(file.c_str(), 04750), 0);
  bool const has_attributes = setxattr(file.c_str(), "user.note", "x", 1, 0) == 0;
  ASSERT_EQ(symlink("file", (folder / "link").c_str()), 0);
  folder.write("file~", "the user's");
  EXPECT_TRUE(path::set_content(folder / "link", "new"));
  EXPECT_EQ(folder.read(file), "new");
  EXPECT_EQ(mode_of(file), 04750u);
  EXPECT_EQ(getxattr(file.c_str(), "user.note", nullptr, 0), has_attributes ? 1 : -1);
  EXPECT_TRUE(std::filesystem::is_symlink(folder / "link"));

  std::string const bytes("a\0b", 3);
  EXPECT_TRUE(path::set_content(folder / "made/too/file", bytes.data(), bytes.data() + 3));
  EXPECT_EQ(path::content(folder / "made/too/file"), bytes);
  EXPECT_FALSE(path::set_content(folder / "made", "x"));
  EXPECT_FALSE(path::set_content(folder / "file/x", "x"));
  EXPECT_FALSE(path::set_content("", "x"));
  EXPECT_EQ(own.names(), names());

  // Nothing is replaced that would lose what only root can give back.
  if (geteuid() == 0 && give_capability(file)) {
    for (std::string const& path : {file, folder.path(), own.path()})
      ASSERT_EQ(chown(path.c_str(), other_user::id, other_user::id), 0);
    ASSERT_TRUE(give_capability(file));
    other_user const user;
    EXPECT_FALSE(path::set_content(file, "newer"));
    EXPECT_EQ(folder.read(file), "new");
  }
  removexattr(file.c_str(), "security.capability");

  // With no common device the neighbour is used, or one of another name if the user has it.
  setenv("TMPDIR", "/proc", 1);
  EXPECT_TRUE(path::set_content(file, "newer"));
  EXPECT_EQ(folder.read(file), "newer");
  EXPECT_EQ(folder.read(folder / "file~"), "the user's");
  EXPECT_EQ(path::intermediate_t(folder / "made/too/file").write_path(), folder / "made/too/file~");
  EXPECT_EQ(folder.names(), (names{"file", "file~", "link", "made"}));
}

TEST_F(file_changes, swap_and_unlink) {
  std::string const a = folder.write("a", "A");
  EXPECT_TRUE(path::swap_and_unlink(a, folder / "made/b"));
  EXPECT_EQ(folder.read(folder / "made/b"), "A");
  EXPECT_TRUE(path::swap_and_unlink(folder / "made/b", folder.write("c", "C")));
  EXPECT_EQ(folder.read(folder / "c"), "A");
  EXPECT_FALSE(path::swap_and_unlink(folder / "made/b", folder / "d"));
  EXPECT_TRUE(path::swap_and_unlink(folder / "c", "/proc/self/status"));
  EXPECT_EQ(folder.read(folder / "c"), "A");
}

/// Each of the system calls fails in turn: never is anything but one of the two contents found, and
/// never is a failure taken for success.
TEST_F(file_changes, failed_writing_is_never_committed) {
  for (bool replaces : {true, false})
    for (int nth = 1;; ++nth) {
      std::string const file = folder / "file";
      std::filesystem::remove(file);
      if (replaces) folder.write("file", "old");
      faulting_calls calls(nth, EIO);
      bool const written = path::set_content(file, "new", calls);
      std::string const found = folder.read(file), call = calls.failed_call();
      SCOPED_TRACE(call);
      if (!calls.has_failed()) {
        EXPECT_TRUE(written);
        EXPECT_GT(nth, 6);
        break;
      }
      EXPECT_TRUE(found == "new" || (!written && found == (replaces ? "old" : "")));
      EXPECT_LE(folder.names().size(), 1u);
      EXPECT_EQ(own.names(), names());
    }
}

}  // namespace
