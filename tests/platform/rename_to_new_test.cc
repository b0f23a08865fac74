#include "platform/system/rename_to_new.h"

#include "path/temporary_folder.h"
#include "test.h"

namespace {

namespace fs = std::filesystem;

/// A file system without the flags of renames, and one without hard links too.
class plain_calls : public platform::file_calls {
 public:
  bool knows_flags = true, has_links = true;

  int renameat2(int folder, char const* from, char const* to, unsigned flags) override {
    errno = EINVAL;
    return flags && !knows_flags ? -1 : file_calls::renameat2(folder, from, to, flags);
  }
  int linkat(int folder, char const* from, char const* to) override {
    errno = EPERM;
    return has_links ? file_calls::linkat(folder, from, to) : -1;
  }
};

// Whatever has the name keeps it, on any file system.
TEST(rename_to_new, replaces_nothing) {
  for (int system = 0; system < 3; ++system)
    for (std::string const there : {"nothing", "file", "link to nowhere", "empty folder"})
      for (bool const is_folder : {false, true}) {
        SCOPED_TRACE(there + (is_folder ? ", folder " : ", file ") + std::to_string(system));
        plain_calls calls;
        calls.knows_flags = system == 0;
        calls.has_links = system != 2;
        temporary_folder folder;
        is_folder ? fs::create_directory(folder / "from") : (folder.write("from", "new"), true);
        if (there == "file") folder.write("to", "old");
        if (there == "link to nowhere") fs::create_symlink("nowhere", folder / "to");
        if (there == "empty folder") fs::create_directory(folder / "to");
        auto const before = fs::symlink_status(folder / "to").type();
        bool const is_free = there == "nothing";
        EXPECT_EQ(platform::rename_to_new(AT_FDCWD, (folder / "from").c_str(),
                                          (folder / "to").c_str(), calls),
                  is_free ? 0 : EEXIST);
        EXPECT_EQ(fs::exists(folder / "from"), !is_free);
        if (!is_free) EXPECT_EQ(fs::symlink_status(folder / "to").type(), before);
        if (there == "file") EXPECT_EQ(folder.read(folder / "to"), "old");
      }
}

}  // namespace
