#include "projects/file_chooser.h"

#include "path/file_system.h"
#include "platform/utf.h"
#include "test.h"

namespace {

using projects::file_chooser;
using projects::typed_file_name;

strings found(std::vector<std::string> paths, char16_t const* typed,
              file_chooser::extensions const& wanted = {}, char const* top = "") {
  file_chooser chooser(std::move(paths), wanted, top);
  chooser.search(typed_file_name(typed));
  strings result;
  for (std::size_t row = 0; row < chooser.size(); ++row)
    result.push_back(chooser.path(row) + (chooser.components_shown(row)
                                              ? " " + std::to_string(chooser.components_shown(row))
                                              : ""));
  return result;
}

TEST(file_chooser, takes_what_is_typed_apart) {
  struct row {
    char16_t const *typed, *letters;
    std::vector<std::u16string> folders;
    std::size_t line, column;
  };
  for (auto const& [typed, letters, folders, line, column] :
       {row{u"Foo.c", u"fooc", {}, 0, 0},
        {u"a/B c/d:12", u"d", {u"a", u"bc"}, 12, 0},
        {u"x:3:4", u"x", {}, 3, 4},
        {u":7", u"", {}, 7, 0},
        {u"/", u"", {}, 0, 0},
        {u"x:", u"x", {}, 0, 0},
        {u"x:1a", u"x1a", {}, 0, 0},
        {u"//a/", u"", {u"a"}, 0, 0},
        {u"x:99999999999", u"x99999999999", {}, 0, 0},
        {u"", u"", {}, 0, 0}}) {
    typed_file_name const name(typed);
    std::string const shown = unicode::to_utf8(typed);
    EXPECT_EQ(name.letters, letters) << shown;
    EXPECT_EQ(name.folders, folders) << shown;
    EXPECT_EQ(name.line, line) << shown;
    EXPECT_EQ(name.column, column) << shown;
  }
}

TEST(file_chooser, lists_the_best_first_and_tells_names_apart) {
  strings const paths = {"/p/src/fabric.c", "/p/src/fooBar.c", "/p/test/fooBar.c",
                         "/q/src/fooBar.c", "/p/x.plist",      "/p/src/deep/er/f\xff"};
  EXPECT_EQ(found(paths, u"fb"), strings({"/p/src/fooBar.c 3", "/p/test/fooBar.c 3",
                                          "/q/src/fooBar.c 3", "/p/src/fabric.c"}));
  EXPECT_EQ(found(paths, u"test/fb"), strings({"/p/test/fooBar.c"}));
  EXPECT_EQ(found(paths, u"p/sr/fb"), strings({"/p/src/fooBar.c", "/p/src/fabric.c"}));
  EXPECT_EQ(found(paths, u"s/p/fb"), strings());
  EXPECT_EQ(found(paths, u"p/ee/f"), strings({"/p/src/deep/er/f\xff"}));
  EXPECT_EQ(found(paths, u"er/").size(), 1u);
  EXPECT_EQ(found(paths, u"p/test/", {}, "/p"), strings());
  EXPECT_EQ(found(paths, u"test/", {}, "/p"), strings({"/p/test/fooBar.c"}));
  EXPECT_EQ(found(paths, u"", {{"plist"}, {}}).size(), 5u);
  EXPECT_EQ(found(paths, u"", {{"c"}, {"plist", "c"}}), strings({"/p/x.plist"}));
  EXPECT_EQ(found({"/a/n", "/b/n"}, u""), strings({"/a/n 2", "/b/n 2"}));
  EXPECT_EQ(found({"/n", "/b/n"}, u""), strings({"/n 2", "/b/n 2"}));
}

// All files by a ranking from scratch, sorted by the plainest means.
TEST(file_chooser, is_a_stable_sort_by_score) {
  std::mt19937 random(4);
  strings paths;
  for (int n = 0; n < 2000; ++n) {
    std::string path = "/";
    for (auto count = 1 + random() % 12; count > 0; --count) path += "abAB_./0"[random() % 8];
    paths.push_back(path + "x");
  }
  for (char16_t const* typed : {u"a", u"ab", u"bax", u"abab", u"0"}) {
    std::vector<std::pair<double, std::string>> ranked;
    for (std::string const& path : paths) {
      std::u16string const name = unicode::to_utf16(path.substr(path.rfind('/') + 1));
      double const score = BriskStringRanker(name).scoreForAbbreviation(typed);
      if (score > -0.5) ranked.emplace_back(score, path);
    }
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](auto const& a, auto const& b) { return a.first > b.first; });
    file_chooser chooser(paths, {});
    chooser.search(typed_file_name(typed));
    ASSERT_EQ(chooser.size(), ranked.size());
    for (std::size_t row = 0; row < ranked.size(); ++row)
      ASSERT_EQ(chooser.path(row), ranked[row].second) << row;
  }
}

TEST(file_chooser, learns_what_letters_stand_for) {
  plist::array bindings;
  auto const choose = [&](char const* letters, char const* path, bool was_first) {
    bindings = projects::bindings_after(bindings, letters, path, was_first);
  };
  choose("ab", "/first", true);
  EXPECT_TRUE(bindings.empty());  // it comes first by itself
  choose("abc", "/x", false);
  choose("ab", "/y", true);  // as other letters like these mean something else
  EXPECT_EQ(projects::bound_file(bindings, "a"), "/y");
  EXPECT_EQ(projects::bound_file(bindings, "abc"), "/x");
  EXPECT_EQ(projects::bound_file(bindings, "abcd"), "");
  choose("ab", "/z", false);
  EXPECT_EQ(bindings.size(), 2u);
  EXPECT_EQ(projects::bound_file(bindings, "ab"), "/z");
  std::string const home = path::home() + "/f";
  choose("h", home.c_str(), false);
  EXPECT_EQ(bindings.back()["match"], plist::value("~/f"));
  EXPECT_EQ(projects::bound_file(bindings, "h"), home);
  for (int n = 0; n < 60; ++n) choose(("x" + std::to_string(n) + "y").c_str(), "/n", false);
  EXPECT_EQ(bindings.size(), 50u);
  EXPECT_EQ(projects::bound_file(bindings, "ab"), "");
  for (plist::value const& wrong : {plist::value(3), plist::value(plist::dictionary{})})
    bindings.push_back(wrong);
  EXPECT_EQ(projects::bound_file(bindings, "x59"), "/n");
}

}  // namespace
