#include "platform/library_folders.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "path/temporary_folder.h"
#include "source_tree.h"

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

unsigned mode_of(std::string const& path) {
  return unsigned(fs::status(path).permissions());
}

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
}

}  // namespace
