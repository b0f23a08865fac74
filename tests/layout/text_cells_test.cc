#include "layout/text_cells.h"

#include "test.h"
#include "text/tab_width.h"
#include "test.h"
#include "test.h"

namespace text_cells {
namespace {

std::string described(std::u16string_view text, std::size_t column = 0, std::size_t tab = 4) {
  std::string result;
  for (piece const& p : pieces_of(text, column, text::tab_stops(tab))) {
    char const* const names[] = {"run",     "cluster",   "script",   "tab",
                                 "control", "unprinted", "surrogate"};
    result += std::string(names[static_cast<int>(p.kind)]) + " " +
              std::to_string(p.last - p.first) + "@" + std::to_string(p.column) + "+" +
              std::to_string(p.width) + ";";
  }
  return result;
}

TEST(text_cells, cuts_a_row_into_pieces) {
  EXPECT_EQ(described(u"plain \u00e4\u0416"), "run 8@0+8;");
  EXPECT_EQ(described(u"a\tb"), "run 1@0+1;tab 1@1+3;run 1@4+1;");
  EXPECT_EQ(described(u"\t", 3), "tab 1@3+1;");
  EXPECT_EQ(described(u"a\x01z"), "run 1@0+1;control 1@1+1;run 1@2+1;");
  EXPECT_EQ(described(u"xe\u0301y"), "run 1@0+1;cluster 2@1+1;run 1@2+1;");
  EXPECT_EQ(described(u"\u6f22"), "cluster 1@0+2;");
  EXPECT_EQ(described(u"a\u200Bb"), "run 1@0+1;unprinted 1@1+0;run 1@1+1;");
  EXPECT_EQ(described(u"\u0301b"), "cluster 1@0+0;run 1@0+1;");
  EXPECT_EQ(described(u"a\u0633\u064E\u0644b"), "run 1@0+1;script 3@1+2;run 1@3+1;");
  EXPECT_EQ(described(u"\U0001F600!"), "cluster 2@0+2;run 1@2+1;");
  char16_t const lone[] = {u'a', 0xD800, u'b'};
  EXPECT_EQ(described({lone, 3}), "run 1@0+1;surrogate 1@1+1;run 1@2+1;");
  EXPECT_EQ(described(u"a\u0301\u0302\u0303\u0304"), "cluster 5@0+1;");
}

// Whatever the text, pieces follow each other without gaps, and take the columns that are measured
// elsewhere.
TEST(text_cells, covers_every_unit_once) {
  std::mt19937 random(3);
  char16_t const alphabet[] = {u'a',   u'\t', 0x301, 0xD83D, 0xDE00, 0x200D,
                               0x6F22, 0x85,  u' ',  0xFE0F, 0x633};
  for (int round = 0; round < 500; ++round) {
    std::u16string text;
    for (unsigned n = random() % 20; n > 0; --n) text += alphabet[random() % std::size(alphabet)];
    std::size_t at = 0, column = random() % 5;
    for (piece const& p : pieces_of(text, column, text::tab_stops(4))) {
      ASSERT_EQ(p.first, at) << "round " << round;
      ASSERT_EQ(p.column, column) << "round " << round;
      ASSERT_LT(p.first, p.last);
      std::u16string_view const units(text.data() + p.first, p.last - p.first);
      ASSERT_EQ(p.width, text::expanded_width(units, column, text::tab_stops(4)));
      at = p.last;
      column += p.width;
    }
    ASSERT_EQ(at, text.size()) << "round " << round;
  }
}

}  // namespace
}  // namespace text_cells
