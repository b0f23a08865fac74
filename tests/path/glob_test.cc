#include "path/glob.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "path/entries.h"
#include "path/temporary_folder.h"

namespace {

TEST(glob, does_match) {
  struct {
    char const *glob, *matching, *other;  // paths, with a blank between two
  } const cases[] = {
      {"*.txt", "a.txt /x/a.txt .d/a.txt .txt", "/x/.hidden.txt a.txt/b a.txt~ atxt"},
      {"!*.txt", "a.png .hidden.txt", "a.txt"},
      {"*", "a /a/b a.b a/.b/c", ".a a/.b"},
      {"{*,.*}", "a .a /b/.a", ""},
      {"a*b", "ab acb /ac.b", "a.b a//b a/b"},
      {"**", "a a/b a/.b", ".b"},
      {"a/**", "a/ a/b a/b/.c x/a/b", "a a/.b ba/"},
      {"a/**/b", "a/b a/x/b a/x/y/b /z/a/b", "ab a/.x/b a/xb"},
      {"**/b", "b a/b", "ab"},
      {"?.c", "a.c x/a.c \xC3\xA9.c", "ab.c .c"},
      {"[a-c]?.[^ch]", "ab.x", "db.x ab.c"},
      {"\\*.\\?", "*.?", "a.b"},
      {"a+(b).c$|^{d}", "a+(b).c$|^{d}", "aab.c"},
      {"*.{c,h}{,pp}", "a.c a.h a.cpp a.hpp", "a.p a.o"},
      {"{a,b}/{c,d}", "a/c b/d x/b/c", "c a"},
      {"a{*,x}{*,/y}", "ab/c ax/y", "a.b"},
      {"", "", "a"},
      {"[z-a]", "", "z [z-a]"},
  };
  auto const check = [](path::glob_t const& glob, std::string const& paths, bool expected) {
    std::istringstream list(paths);
    for (std::string path; list >> path;) EXPECT_EQ(glob.does_match(path), expected) << path;
  };
  for (auto const& c : cases) {
    SCOPED_TRACE(c.glob);
    path::glob_t const glob(c.glob);
    check(glob, c.matching, true);
    check(glob, c.other, false);
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
  auto const begin = std::chrono::steady_clock::now();
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
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

}  // namespace
