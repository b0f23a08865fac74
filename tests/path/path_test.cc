#include "path/path.h"

#include <rapidcheck/gtest.h>

#include "data_rows.h"
#include "path/expand_braces.h"

namespace {

TEST(path, normalize) {
  for (auto const& c : data_rows("paths.txt", "normalize"))
    EXPECT_EQ(path::normalize(c[0]), c[1]) << c[0];
}

TEST(path, pieces) {
  for (auto const& c : data_rows("paths.txt", "pieces")) {
    EXPECT_EQ(path::parent(c[0]), c[1]) << c[0];
    EXPECT_EQ(path::name(c[0]), c[2]) << c[0];
  }
}

TEST(path, join) {
  EXPECT_EQ(path::join("/a", "/b"), "/b");
  EXPECT_EQ(path::join("/a", "b"), "/a/b");
  EXPECT_EQ(path::join("/a/", "../b/"), "/b");
  EXPECT_EQ(path::join("a", ""), "a");
  EXPECT_EQ(path::join("", "a"), "/a");
  EXPECT_EQ(path::join("/", "/"), "/");
}

TEST(path, remove_parent_dir_drops_a_final_slash) {
  struct {
    char const *given, *expected;
  } const cases[] = {{"a/", "a"}, {"/", "/"}, {"a/../b/", "b"}, {"", ""}, {"../", ".."}};
  for (auto const& c : cases) {
    std::string path = c.given;
    path::remove_parent_dir(path);
    EXPECT_EQ(path, c.expected) << c.given;
  }
}

/// All paths of up to seven characters of an alphabet that has every special case.
TEST(path, normalized_paths_are_clean) {
  std::vector<std::string> paths = {""};
  for (std::size_t i = 0; i < paths.size() && paths[i].size() < 7; ++i)
    for (char c : {'a', '.', '/'}) paths.push_back(paths[i] + c);
  for (auto const& path : paths) {
    std::string const normal = path::normalize(path);
    EXPECT_EQ(normal.find("//"), normal.npos) << path;
    EXPECT_EQ(("/" + normal).find("/./"), normal.npos) << path;
    EXPECT_EQ(normal.find("a/../"), normal.npos) << path;
    EXPECT_TRUE(normal.size() < 2 || normal.back() != '/') << path;
    EXPECT_TRUE(normal.empty() || normal[0] != '/' || path[0] == '/') << path;
    EXPECT_EQ(path::normalize(normal), normal) << path;
  }
}

TEST(path, expand_braces) {
  for (auto const& c : data_rows("paths.txt", "braces"))
    EXPECT_EQ(path::expand_braces(c[0]), strings(c.begin() + 1, c.end())) << c[0];

  for (std::string const& much : {repeated("{a,b}", 100), "{a,b}" + std::string(10'000'000, 'x'),
                                  repeated("{a,", 20'000), std::string(20'000, '{')})
    EXPECT_EQ(path::expand_braces(much), strings{much});
}

}  // namespace
