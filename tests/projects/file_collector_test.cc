#include "projects/file_collector.h"

#include <thread>

#include "path/temporary_folder.h"
#include "projects/file_walk.h"
#include "test.h"

namespace fs = std::filesystem;

namespace {

projects::filter_patterns const without_hidden{"!/\\.[^/]*$", "!/\\.[^/]*$"};

void make(temporary_folder const& folder, strings const& names) {
  for (std::string const& name : names) {
    fs::create_directories(fs::path(folder / name).parent_path());
    folder.write(name, "");
  }
}

strings collected(projects::file_collector& files, std::size_t most_taken = 1'000'000) {
  strings result;
  for (bool is_done = false; !is_done && result.size() < most_taken; std::this_thread::yield()) {
    is_done = files.is_done();
    for (auto const& batch : files.take())
      for (projects::file_batch::index n = 0; n < batch->size(); ++n)
        result.push_back(batch->path(n));
  }
  return result;
}

// Also whether the walk comes to a file can be told from its name.
TEST(file_collector, finds_what_a_walk_does) {
  temporary_folder folder;
  strings names{"a/x.c",     "a/.h/y.c",   ".hidden",   "b/\xff",
                "b/x.plist", "a/b/c/d/.e", "a/b/c/d/f", "o"};
  for (int n = 0; n < 2000; ++n) names.push_back("many/" + std::to_string(n) + ".c");
  make(folder, names);
  std::vector<projects::walk_root> const roots{{folder / "a", true, without_hidden},
                                               {folder.path(), true, without_hidden},
                                               {folder / ".hidden", false, {}}};
  for (projects::offered_extensions const& wanted :
       {projects::offered_extensions{}, {{"plist"}, {}}, {{}, {"c"}}}) {
    projects::file_collector files({roots, wanted});
    EXPECT_EQ(files.top(), fs::path(folder.path()).parent_path());
    strings expected;
    projects::file_walk walk(roots, {});
    for (std::string path; walk.next(path);)
      if (wanted.take(path)) expected.push_back(path);
    EXPECT_EQ(collected(files), expected);
    EXPECT_FALSE(files.is_cut());
    strings all{folder / "none"};
    for (std::string const& name : names) all.push_back(folder / name);
    all = projects::files_to_offer(all, roots, wanted);
    EXPECT_EQ(std::set(all.begin(), all.end()), std::set(expected.begin(), expected.end()));
  }
  projects::file_collector left({roots, {}});
  collected(left, 1);
}

TEST(file_collector, begins_where_a_project_does) {
  temporary_folder folder;
  make(folder, {"p/.git/HEAD", "p/a/b/c", "q/r/s", "q/link/x"});
  fs::create_symlink("nowhere", folder / "q/link/.hg");
  auto const root = [&](std::string const& path) {
    auto const roots = projects::roots_near(path, without_hidden);
    return roots.at(0).path + (roots.at(0).patterns == without_hidden ? "" : " alone");
  };
  EXPECT_EQ(root(folder / "p/a/b"), folder / "p");
  EXPECT_EQ(root(folder / "p"), folder / "p");
  EXPECT_EQ(root(folder / "q/r"), folder / "q/r");
  EXPECT_EQ(root(folder / "q/link"), folder / "q/link");
  EXPECT_EQ(root("/"), "/ alone");
}

}  // namespace
