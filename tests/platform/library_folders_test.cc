#include "platform/system/library_folders.h"

#include "path/temporary_folder.h"
#include "source_tree.h"
#include "test.h"

namespace fs = std::filesystem;

namespace {

using platform::environment;

TEST(library_folders, follow_the_environment) {
  environment const plain = {{"HOME", "/home/u/"}};
  EXPECT_EQ(platform::user_data_folder(plain), "/home/u/.local/share/Quirnote");
  EXPECT_EQ(platform::config_folder(plain), "/home/u/.config/Quirnote");
  EXPECT_EQ(platform::cache_folder(plain), "/home/u/.cache/Quirnote");
  EXPECT_EQ(platform::state_folder(plain), "/home/u/.local/state/Quirnote");
  EXPECT_EQ(platform::library_domains(plain),
            (std::vector<std::string>{"/home/u/.local/share/Quirnote", "/usr/local/share/Quirnote",
                                      "/usr/share/Quirnote"}));

  environment const set = {{"HOME", "/home/u"},         {"XDG_DATA_HOME", "/d/"},
                           {"XDG_CONFIG_HOME", "/c//"}, {"XDG_CACHE_HOME", "relative"},
                           {"XDG_STATE_HOME", ""},      {"XDG_DATA_DIRS", "/a/:rel::/d:/b:/a"}};
  EXPECT_EQ(platform::user_data_folder(set), "/d/Quirnote");
  EXPECT_EQ(platform::config_folder(set), "/c/Quirnote");
  EXPECT_EQ(platform::cache_folder(set), "/home/u/.cache/Quirnote");
  EXPECT_EQ(platform::state_folder(set), "/home/u/.local/state/Quirnote");
  EXPECT_EQ(platform::library_domains(set),
            (std::vector<std::string>{"/d/Quirnote", "/usr/local/share/Quirnote", "/a/Quirnote",
                                      "/b/Quirnote"}));
  EXPECT_TRUE(platform::user_data_folder({}).starts_with('/'));
  EXPECT_EQ(platform::config_folder({{"HOME", "/"}}), "/.config/Quirnote");
}

class folders_test : public testing::Test {
 protected:
  temporary_folder const folder_;
  std::string const top_ = folder_.path();
};

TEST_F(folders_test, the_runtime_folder_is_private) {
  environment const env = {{"XDG_RUNTIME_DIR", top_}, {"XDG_CACHE_HOME", top_ + "/cache"}};
  std::string const folder = top_ + "/Quirnote", fallback = top_ + "/cache/Quirnote/run";
  EXPECT_EQ(platform::runtime_folder(env), folder);
  EXPECT_EQ(mode_of(folder), 0700u);
  fs::permissions(folder, fs::perms(0755));
  EXPECT_EQ(platform::runtime_folder(env), folder);
  EXPECT_EQ(mode_of(folder), 0700u);

  fs::remove(folder);
  fs::create_directories(top_ + "/elsewhere");
  fs::create_directory_symlink(top_ + "/elsewhere", folder);
  EXPECT_EQ(platform::runtime_folder(env), fallback);
  EXPECT_EQ(mode_of(fallback), 0700u);

  EXPECT_EQ(platform::runtime_folder({{"XDG_CACHE_HOME", top_ + "/cache"}}), fallback);
  EXPECT_EQ(platform::runtime_folder(
                {{"XDG_RUNTIME_DIR", top_ + "/missing"}, {"XDG_CACHE_HOME", top_ + "/cache"}}),
            fallback);
  folder_.write("file", "x");
  EXPECT_EQ(platform::runtime_folder({{"XDG_CACHE_HOME", top_ + "/file"}}), std::nullopt);
}

TEST_F(folders_test, shared_support_is_beside_the_program) {
  EXPECT_EQ(platform::shared_support_folder("/opt/q/bin/quirnote"), "/opt/q/share/Quirnote");
  std::string const build = top_ + "/build/debug";
  fs::create_directories(build + "/bin");
  std::ofstream(build + "/CMakeCache.txt") << "x";
  EXPECT_EQ(platform::shared_support_folder(build + "/bin/quirnote"), top_ + "/share");
  fs::create_directories(build + "/share/Quirnote");
  EXPECT_EQ(platform::shared_support_folder(build + "/bin/quirnote"), build + "/share/Quirnote");
  EXPECT_EQ(platform::shared_support_folder(), source_file("share"));
}

TEST_F(folders_test, making_folders) {
  EXPECT_TRUE(platform::make_folders(top_ + "/a/b/c"));
  EXPECT_EQ(mode_of(top_ + "/a/b"), 0700u);
  EXPECT_TRUE(platform::make_folders(top_ + "/a/b/c"));
  folder_.write("file", "x");
  EXPECT_FALSE(platform::make_folders(top_ + "/file"));
  EXPECT_FALSE(platform::make_folders(top_ + "/file/a"));
  fs::create_symlink("nowhere", top_ + "/link");
  EXPECT_FALSE(platform::make_folders(top_ + "/link/a"));
  EXPECT_EQ(errno, ENOTDIR);
}

// Root may be at work with the settings of another user, who is to use the folders too.
TEST_F(folders_test, folders_belong_to_whom_the_nearest_one_belongs) {
  if (geteuid() != 0) GTEST_SKIP() << "only root gives files away";
  std::string const home = top_ + "/home", away = top_ + "/away";
  fs::create_directories(home + "/old");
  fs::create_directories(away);
  ASSERT_EQ(chown(home.c_str(), 1234, 4321), 0);
  ASSERT_EQ(chown(away.c_str(), 99, 98), 0);
  fs::create_directory_symlink(away, home + "/link");
  auto const owner_of = [](std::string const& path) {
    auto const info = status_of(path);
    return std::to_string(info.st_uid) + ":" + std::to_string(info.st_gid);
  };
  for (char const* name : {"/a/b/c", "/old/d", "/link/e/f"})
    EXPECT_TRUE(platform::make_folders(home + name)) << name;
  for (char const* name : {"/a", "/a/b", "/a/b/c"}) EXPECT_EQ(owner_of(home + name), "1234:4321");
  for (char const* name : {"/old", "/old/d", "/link"}) EXPECT_EQ(owner_of(home + name), "0:0");
  for (char const* name : {"/e", "/e/f"}) EXPECT_EQ(owner_of(away + name), "99:98");
  // A private folder can't be made for root there.
  EXPECT_EQ(platform::runtime_folder({{"XDG_CACHE_HOME", home + "/cache"}}), std::nullopt);
  EXPECT_FALSE(fs::exists(home + "/cache/Quirnote/run"));
}

}  // namespace
