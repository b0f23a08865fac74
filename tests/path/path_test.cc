#include "path/path.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <vector>

#include "path/expand_braces.h"

namespace {

TEST(path, normalize) {
  struct {
    char const *given, *expected;
  } const cases[] = {
      {"", ""},
      {"/", "/"},
      {".", "."},
      {"..", ".."},
      {"/.", ""},
      {"./", ""},
      {"./.", ""},
      {"//", "/"},
      {"//.", ""},
      {"/./", "/"},
      {"a", "a"},
      {"a/", "a"},
      {"a//", "a"},
      {"a/.", "a"},
      {"a/./", "a"},
      {"./a", "a"},
      {"././/a", "a"},
      {"/a/./b//c/", "/a/b/c"},
      {".a/.b./..c", ".a/.b./..c"},
      {"a./b", "a./b"},
      {"a../b", "a../b"},
      {"...", "..."},
      {"a/...", "a/..."},
      {"a/b/../c", "a/c"},
      {"a/..", ""},
      {"a/../", ""},
      {"a/b/..", "a"},
      {"/a/..", "/"},
      {"/..", "/.."},
      {"/../a", "/../a"},
      {"/a/../../b", "/../b"},
      {"../a", "../a"},
      {"a/../../..", "../.."},
      {"a/b/../../c/./../d", "d"},
      {"./../a", "../a"},
      {"\xFF/\n/../b c", "\xFF/b c"},
  };
  for (auto const& c : cases) EXPECT_EQ(path::normalize(c.given), c.expected) << c.given;
}

TEST(path, pieces) {
  struct {
    char const *given, *parent, *name;
  } const cases[] = {
      {"", "", ""},
      {"/", "/", ""},
      {"a", "", "a"},
      {"/a", "/", "a"},
      {"/a/", "/", "a"},
      {"a/b", "a", "b"},
      {".", "..", "."},
      {"..", "../..", ".."},
      {"/..", "/../..", ".."},
      {"/a/b/../c", "/a", "c"},
      {"/a/b/..", "/", "a"},
  };
  for (auto const& c : cases) {
    EXPECT_EQ(path::parent(c.given), c.parent) << c.given;
    EXPECT_EQ(path::name(c.given), c.name) << c.given;
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
  using texts = std::vector<std::string>;
  struct {
    std::string given;
    texts expected;
  } const cases[] = {
      {"", {""}},
      {"a{b,c}d{e,f}", {"abde", "abdf", "acde", "acdf"}},
      {"{,a}{b,}", {"b", "", "ab", "a"}},
      {"{a,{b,c}d}e", {"ae", "bde", "cde"}},
      {"*.{c,h}{,pp}", {"*.c", "*.cpp", "*.h", "*.hpp"}},
      {"{}", {"{}"}},
      {"{a}", {"{a}"}},
      {"{{a,b}}", {"{a}", "{b}"}},
      {"{a,{b}", {"a", "{b"}},  // the brace behind b closes the outer group
      {"{a,b", {"{a,b"}},
      {"{a,{b,c}", {"{a,b", "{a,c"}},
      {"a,b}", {"a,b}"}},
      {"\\{a,b\\}", {"{a,b}"}},
      {"{a\\,b,c\\\\}", {"a,b", "c\\"}},
      {"{\\a,b\\", {"{\\a,b\\"}},
  };
  for (auto const& c : cases) EXPECT_EQ(path::expand_braces(c.given), c.expected) << c.given;

  std::string many, nested;
  for (int i = 0; i < 100; ++i) many += "{a,b}";
  EXPECT_EQ(path::expand_braces(many), texts{many});
  many = "{a,b}" + std::string(10'000'000, 'x');
  EXPECT_EQ(path::expand_braces(many), texts{many});
  for (int i = 0; i < 20'000; ++i) nested += "{a,";
  EXPECT_EQ(path::expand_braces(nested), texts{nested});
  EXPECT_EQ(path::expand_braces(std::string(20'000, '{')), texts{std::string(20'000, '{')});
}

}  // namespace
