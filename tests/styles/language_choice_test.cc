#include "styles/language_choice.h"

#include "data_rows.h"
#include "plist/text_reader.h"

namespace {

plist::array list(char const* text) {
  return plist::convert(text, nullptr).elements();
}

// One has a first line that is no pattern: it takes no file.
plist::array languages() {
  return list(
      R"(( { uuid = 'ruby'; fileTypes = ( 'rb', 'Rakefile' ); firstLineMatch = '^#!.*ruby'; },
                   { uuid = 'rails'; fileTypes = ( 'view.rb', 'rb' ); },
                   { uuid = 'bad'; firstLineMatch = '(a'; },
                   { uuid = 'plain'; fileTypes = ( 'txt' ); firstLineMatchLast = '^<'; } ))");
}

TEST(language_choice, goes_by_first_line_and_longest_type_and_the_users_first) {
  for (auto const& c : data_rows("language_choice.txt", "files"))
    EXPECT_EQ(language_choice::for_file(c[0], c[1], languages(), list(c[2].c_str()), c[3]), c[4])
        << c[0] << " " << c[1] << " " << c[2];
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
