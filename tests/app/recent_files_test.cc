#include "app/recent_files.h"

#include "path/temporary_folder.h"
#include "platform/own_defaults.h"
#include "test.h"

using namespace app;

namespace {

class recent_files_test : public testing::Test {
 protected:
  recent_files_test() { set_limit(1000); }

  static void set_limit(int most) {
    platform::user_defaults::standard().set("NSRecentDocumentsLimit", most);
  }
  strings stored() const { return recent_files(path_).paths(); }

  own_defaults const defaults_;
  temporary_folder folder_;
  std::string const path_ = folder_ / "made/RecentFiles.plist";
};

TEST_F(recent_files_test, are_the_newest) {
  recent_files recent(path_);
  EXPECT_TRUE(recent.paths().empty());
  std::string const odd = folder_.write("odd \xff\n&", "");
  for (char const* name : {"a", "b", "c"}) recent.add(folder_.write(name, ""));
  recent.add(odd);
  recent.add(folder_ / "a");
  recent.add(folder_ / "gone");
  strings const expected = {folder_ / "gone", folder_ / "a", odd, folder_ / "c", folder_ / "b"};
  EXPECT_EQ(recent.paths(), expected);
  EXPECT_EQ(stored(), expected);

  set_limit(2);
  recent.add(folder_ / "b");
  EXPECT_EQ(recent.paths(), strings({folder_ / "b", folder_ / "gone"}));
  recent.clear();
  EXPECT_TRUE(recent.paths().empty());
}

TEST_F(recent_files_test, a_damaged_list_is_kept) {
  int kept = 0;
  std::string const list = folder_ / "list";
  for (std::string const damage : {"", "<plist><array><data>no", "<plist><dict/></plist>"}) {
    SCOPED_TRACE(damage);
    std::string const name = list + ".damaged-" + std::to_string(++kept);
    std::string const errors = errors_of([&] {
      recent_files recent(folder_.write("list", damage));
      EXPECT_TRUE(recent.paths().empty());
      EXPECT_EQ(folder_.read(list), damage);
      for (char const* added : {"a", "b"}) recent.add(folder_.write(added, ""));
      EXPECT_EQ(recent.paths(), strings({folder_ / "b", folder_ / "a"}));
    });
    EXPECT_EQ(folder_.read(name), damage);
    EXPECT_EQ(errors, "Quirnote: " + list + ": is damaged, and is kept as " + name + "\n");
  }
}

TEST_F(recent_files_test, no_process_loses_what_others_add) {
  constexpr int processes = 24, files = 4;
  std::filesystem::create_directory(folder_ / "made");
  std::string const left =
      folder_.write("made/.RecentFiles.plist.quirnote-1", "of one that was killed");
  timespec const long_ago[2] = {{1000, 0}, {1000, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, left.c_str(), long_ago, 0), 0);
  for (int p = 0; p < processes; ++p)
    if (::fork() == 0) {
      recent_files list(path_);
      for (int n = 0; n < files; ++n) list.add("/" + std::to_string(p * files + n));
      list.~recent_files();
      ::_exit(0);
    }
  for (int status = 0; ::wait(&status) > 0;) EXPECT_EQ(status, 0);
  EXPECT_EQ(stored().size(), std::size_t{processes * files});
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_ / "made"), {}), 1);
}

TEST_F(recent_files_test, what_cannot_be_stored_is_stored_later) {
  using paths = std::vector<std::string>;
  std::string const below = path_ + "/list";
  std::filesystem::create_directories(below);  // no file can take its place
  {
    recent_files list(below);
    list.add("/a");
    list.add("/b");
    list.remove("/a");
    EXPECT_EQ(list.paths(), paths{"/b"});
    std::filesystem::remove(below);
    list.add("/c");
    EXPECT_EQ(recent_files(below).paths(), (paths{"/c", "/b"}));
    std::filesystem::remove(below);
    std::filesystem::create_directory(below);
    list.add("/d");
    std::filesystem::remove(below);
  }
  EXPECT_EQ(recent_files(below).paths(), paths{"/d"});
}

TEST_F(recent_files_test, one_that_cannot_be_read_is_reported_once) {
  recent_files unreadable(folder_.path());
  EXPECT_EQ(errors_of([&] { unreadable.add("/1"), unreadable.add("/2"); }),
            "Quirnote: " + folder_.path() + ": can't be read: Is a directory\n");
}

}  // namespace
