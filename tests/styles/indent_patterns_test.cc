#include "styles/indent_patterns.h"

#include "actions/indent.h"
#include "data_rows.h"
#include "platform/utf.h"

using namespace styles;

namespace {

// Lines that end with ":" or "(" open a block, "end" and ")" close one, "if" holds for one line.
plist::value const settings = plist::dictionary{{"unIndentedLinePattern", "^\\s*(#|$)"},
                                                {"increaseIndentPattern", "[:(]$"},
                                                {"decreaseIndentPattern", "^\\s*(end|\\))"},
                                                {"indentNextLinePattern", "^\\s*if\\b"}};

TEST(indent_patterns, say_how_far_a_line_is_indented) {
  indent_patterns const patterns(settings);
  for (auto const& r : data_rows("indentation.txt", "widths")) {
    text::storage storage;
    storage.insert(text::iterator(0, 0, &storage), r[0].begin(), r[0].end());
    EXPECT_EQ(
        patterns.indentForContentAtLine(unicode::to_utf16(r[1]), storage.lines() - 1, storage, 4),
        std::stoul(r[2]))
        << r[0] + r[1];
  }
}

TEST(indent_patterns, a_bad_pattern_costs_only_itself) {
  indent_patterns const patterns(
      plist::dictionary{{"increaseIndentPattern", "("}, {"decreaseIndentPattern", "x"}});
  EXPECT_FALSE(patterns.matches(indent_patterns::increase, u"("));
  EXPECT_EQ(patterns.typeForLine(u"(x"), unsigned(indent_patterns::decrease));
}

TEST(indent, is_cut_and_added_by_columns) {
  EXPECT_EQ(actions::indent::level(u"        a\n\n\tb", 4), 4u);
  EXPECT_EQ(actions::indent::cut_from_each_line(u"      a\n \t b\n\n c", 4, 4), u"  a\n b\n\nc");
  EXPECT_EQ(actions::indent::skip(u"  \tx", 3, 4), 2u);
  EXPECT_EQ(actions::indent::prefix_each_line(u"a\n\nb\n", u"  "), u"a\n\n  b\n");
  EXPECT_EQ(actions::indent::blanks(10, 4, false), u"\t\t  ");
}

}  // namespace
