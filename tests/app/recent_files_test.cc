#include "app/recent_files.h"

#include "path/temporary_folder.h"
#include "platform/system/folder_lock.h"
#include "platform/user_defaults.h"
#include "test.h"
#include "test.h"

using namespace app;

namespace {

class recent_files_test : public testing::Test {
 protected:
  recent_files_test() {
    auto own = std::make_unique<platform::user_defaults>("");
    own->set("NSRecentDocumentsLimit", 1000);
    replaced_ = platform::user_defaults::set_standard(std::move(own));
  }
  ~recent_files_test() override { platform::user_defaults::set_standard(std::move(replaced_)); }

  std::vector<std::string> stored() const { return recent_files(path_).paths(); }

  temporary_folder folder_;
  std::string const path_ = folder_ / "RecentFiles.plist";

 private:
  std::unique_ptr<platform::user_defaults> replaced_;
};

TEST_F(recent_files_test, no_process_loses_what_others_add) {
  constexpr int processes = 24, files = 4;
  for (int p = 0; p < processes; ++p)
    if (::fork() == 0) {
      recent_files list(path_);
      for (int n = 0; n < files; ++n) list.add("/" + std::to_string(p * files + n));
      list.~recent_files();
      ::_exit(0);
    }
  for (int status = 0; ::wait(&status) > 0;) EXPECT_EQ(status, 0);
  EXPECT_EQ(stored().size(), std::size_t{processes * files});
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(std::string(folder_ / "")), {}), 1);
}

TEST_F(recent_files_test, what_cannot_be_stored_is_stored_later) {
  using paths = std::vector<std::string>;
  std::string const below = path_ + "/list";
  std::filesystem::create_directory(path_);
  std::filesystem::create_directory(below);  // no file can take its place
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

}  // namespace
