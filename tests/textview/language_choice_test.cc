#include "textview/language_choice.h"

#include <gtest/gtest.h>

#include "plist/text_reader.h"

namespace {

plist::array list(char const* text) {
  return plist::convert(text, nullptr).elements();
}

plist::array languages() {
  return list(
      R"(( { uuid = 'ruby'; fileTypes = ( 'rb', 'Rakefile' ); firstLineMatch = '^#!.*ruby'; },
                   { uuid = 'rails'; fileTypes = ( 'view.rb', 'rb' ); },
                   { uuid = 'plain'; fileTypes = ( 'txt' ); } ))");
}

TEST(language_choice, goes_by_first_line_and_longest_type_and_the_users_first) {
  struct {
    char const *path, *first_line, *bindings, *fallback, *language;
  } const cases[] = {
      {"/a/foo.rb", "", "( )", "", "ruby"},  // of equal lengths the first
      {"/a/foo_rb", "", "( )", "", "ruby"},
      {"rb", "", "( )", "", "ruby"},
      {"/a/foorb", "", "( )", "", ""},
      {"/a/foorb", "", "( )", "plain", "plain"},
      {"/a/foorb", "", "( )", "no such uuid", ""},
      {"/a/x.view.rb", "", "( )", "", "rails"},
      {"/a/Rakefile", "", "( )", "", "ruby"},
      {"/a/x.txt", "#!/usr/bin/ruby", "( )", "", "ruby"},
      {"/a/x.rb", "", "( { language = 'plain'; fileTypes = ( 'rb' ); } )", "", "plain"},
      {"/a/x.rb", "", "( { language = 'gone'; fileTypes = ( 'rb' ); } )", "", "ruby"},
      {"/a/x.rb", "%%",
       "( { language = 'plain'; fileTypes = ( 'rb' ); },"
       "  { language = 'rails'; firstLineMatch = '^%%'; } )",
       "", "rails"},
      {"/a/x.txt", "#!ruby", "( { language = 'rails'; fileTypes = ( 'txt' ); } )", "", "rails"},
      {"/a/x.txt", "", "( { language = 'rails'; firstLineMatch = '('; } )", "", "rails"},
  };
  for (auto const& c : cases)
    EXPECT_EQ(
        language_choice::for_file(c.path, c.first_line, languages(), list(c.bindings), c.fallback),
        c.language)
        << c.path << " " << c.first_line << " " << c.bindings;
}

TEST(language_choice, learns_extensions_and_names) {
  EXPECT_EQ(language_choice::word_to_learn("/a.b/x.tar.gz"), "gz");
  EXPECT_EQ(language_choice::word_to_learn("/a.b/Makefile"), "Makefile");
  EXPECT_EQ(language_choice::word_to_learn("/a.b/.profile"), ".profile");
  EXPECT_EQ(language_choice::word_to_learn(""), "");
  plist::array const known = list(
      "( { language = 'a'; name = 'A'; fileTypes = ( 'x' ); },"
      "  { language = 'b'; name = 'B'; fileTypes = ( 'x' ); firstLineMatch = 'y'; },"
      "  { language = 'c'; name = 'C'; fileTypes = ( 'x', 'z' ); } )");
  plist::array const without = language_choice::without_word(known, "x");
  EXPECT_EQ(plist::value(without),
            plist::value(list("( { language = 'b'; name = 'B'; fileTypes = ( );"
                              "    firstLineMatch = 'y'; },"
                              "  { language = 'c'; name = 'C'; fileTypes = ( 'z' ); } )")));
  plist::array const with = language_choice::with_word(without, "x", "c", "C");
  EXPECT_EQ(with[1]["fileTypes"], plist::value(plist::array{"z", "x"}));
  EXPECT_EQ(language_choice::with_word(with, "q", "new", "New").back(),
            plist::value(list("( { language = 'new'; name = 'New'; fileTypes = ( 'q' ); } )")[0]));
}

}  // namespace
