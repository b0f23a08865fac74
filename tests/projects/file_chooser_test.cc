#include "projects/file_chooser.h"

#include "path/file_system.h"
#include "platform/utf.h"
#include "projects/BriskStringRanker.h"
#include "test.h"

namespace {

using projects::file_chooser;
using projects::typed_file_name;

file_chooser::batch batch_of(strings const& paths,
                             projects::offered_extensions const& wanted = {}) {
  auto result = std::make_shared<projects::file_batch>();
  for (std::string const& path : paths)
    if (wanted.take(path)) result->add(path);
  result->finish();
  return result;
}

strings rows_of(file_chooser const& chooser) {
  strings result;
  for (std::size_t row = 0; row < chooser.size(); ++row)
    result.push_back(chooser.path(row) + (chooser.components_shown(row)
                                              ? " " + std::to_string(chooser.components_shown(row))
                                              : ""));
  return result;
}

strings found(strings const& paths, char16_t const* typed,
              projects::offered_extensions const& wanted = {}, char const* top = "") {
  file_chooser chooser;
  chooser.set_top(top);
  chooser.add(batch_of(paths, wanted));
  chooser.search(typed_file_name(typed));
  return rows_of(chooser);
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

// All files by a ranking from scratch, sorted by the plainest means, however they come and the
// letters are typed.
TEST(file_chooser, is_a_stable_sort_by_score) {
  std::mt19937 random(4);
  std::set<std::string> known;
  strings paths;
  while (paths.size() < 3000) {
    std::string path = "/";
    for (auto count = 1 + random() % 9; count > 0; --count) path += "abAB_./0"[random() % 8];
    if (known.insert(path += "x").second) paths.push_back(path);
  }
  file_chooser chooser;
  std::size_t there = 0, first = 0;
  strings recent;
  for (char16_t const* typed :
       {u"a", u"ab", u"abx", u"a", u"", u"a/", u"a/b", u"a/bx", u"abab", u"b/a/0", u"0"}) {
    typed_file_name const name(typed);
    chooser.search(name);
    std::size_t const more = std::min(paths.size(), there + 400);
    chooser.add(batch_of({paths.begin() + static_cast<std::ptrdiff_t>(there),
                          paths.begin() + static_cast<std::ptrdiff_t>(more)}));
    there = more;
    if (++first % 3 == 0) {
      recent = {paths[random() % there], paths[random() % there], "/else/abx"};
      if (recent[0] == recent[1]) recent.pop_back();
      chooser.set_first(batch_of(recent));
    }
    strings all = recent;
    for (std::size_t n = 0; n < there; ++n)
      if (std::find(recent.begin(), recent.end(), paths[n]) == recent.end())
        all.push_back(paths[n]);
    std::vector<std::pair<double, std::string>> ranked;
    for (std::string const& path : all) {
      std::u16string const last = unicode::to_utf16(path.substr(path.rfind('/') + 1));
      double const score =
          name.letters.empty() ? 0 : BriskStringRanker(last).scoreForAbbreviation(name.letters);
      if (score > -0.5 && (name.folders.empty() || !found({path}, typed).empty()))
        ranked.emplace_back(score, path);
    }
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](auto const& a, auto const& b) { return a.first > b.first; });
    EXPECT_EQ(chooser.total(), all.size());
    ASSERT_EQ(chooser.size(), ranked.size());
    for (std::size_t row = 0; row < ranked.size(); ++row) {
      ASSERT_EQ(chooser.path(row), ranked[row].second) << row << " by " << unicode::to_utf8(typed);
      ASSERT_EQ(chooser.row_of(ranked[row].second), row);
    }
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
