#include "path/glob.h"

#include <thread>

#include "data_rows.h"
#include "path/entries.h"
#include "path/temporary_folder.h"

namespace {

TEST(glob, does_match) {
  auto const check = [](path::glob_t const& glob, std::string const& paths, bool expected) {
    std::istringstream list(paths);
    for (std::string path; list >> path;) EXPECT_EQ(glob.does_match(path), expected) << path;
  };
  for (auto const& c : data_rows("globs.txt", "matches")) {
    SCOPED_TRACE(c[0]);
    path::glob_t const glob(c[0]);
    check(glob, c[1], true);
    check(glob, c[2], false);
  }
}

TEST(glob, entries_that_match_come_first) {
  temporary_folder folder;
  for (char const* name : {"a.c", "b.h", ".c.c", "d.o", "e"}) folder.write(name, "");
  auto const names = [](path::entries const& entries) {
    std::set<std::string> result;
    for (dirent const* entry : entries) result.insert(entry->d_name);
    return result;
  };
  using set = std::set<std::string>;
  path::entries const all(folder.path());
  EXPECT_EQ(names(all), (set{"a.c", "b.h", ".c.c", "d.o", "e"}));
  path::entries const some(folder.path(), "*.{c,h}");
  EXPECT_EQ(names(some), (set{"a.c", "b.h"}));
  EXPECT_EQ(some.scanned(), 5u);
  EXPECT_EQ(names(path::entries(folder.path(), "!*.*")), set{"e"});
  EXPECT_EQ(path::entries(folder / "missing", "*").size(), 0u);
}

/// Neither many alternatives nor many ways to match, nor a first use on several threads.
TEST(glob, hostile_globs_end) {
  std::string braces, stars, deep(4000, '/'), inner = "x";
  for (int i = 0; i < 40; ++i) braces += "{a,b}", stars += "**/a*", inner = "{" + inner + ",y}";
  for (std::size_t i = 0; i < deep.size(); i += 2) deep[i] = 'a';
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&] {
      EXPECT_TRUE(path::glob_t(braces).does_match(braces));
      EXPECT_FALSE(path::glob_t(braces).does_match(std::string(40, 'a')));
      EXPECT_FALSE(path::glob_t(stars + "b").does_match(deep));
      EXPECT_TRUE(path::glob_t(inner).does_match("y"));
      EXPECT_FALSE(path::glob_t(std::string(100'000, '*')).does_match(deep + "."));
    });
  for (auto& thread : threads) thread.join();
}

}  // namespace
