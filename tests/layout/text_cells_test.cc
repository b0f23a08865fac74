#include "layout/text_cells.h"

#include "data_rows.h"
#include "platform/utf.h"
#include "text/tab_width.h"

namespace text_cells {
namespace {

std::string described(std::u16string_view text, std::size_t column) {
  std::string result;
  for (piece const& p : pieces_of(text, column, text::tab_stops(4))) {
    char const* const names[] = {"run",     "cluster",   "script",   "tab",
                                 "control", "unprinted", "surrogate"};
    result += std::string(names[static_cast<int>(p.kind)]) + " " +
              std::to_string(p.last - p.first) + "@" + std::to_string(p.column) + "+" +
              std::to_string(p.width) + ";";
  }
  return result;
}

TEST(text_cells, cuts_a_row_into_pieces) {
  for (auto const& row : data_rows("cells.txt", "pieces"))
    EXPECT_EQ(described(unicode::to_utf16(row[0]), std::stoul(row[1])), row[2]) << row[0];
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
