#include "encoding/line_ending.h"

#include "agreement.h"
#include "test.h"

namespace {

using namespace encoding;

TEST(line_ending, harmonize) {
  using line_ending::CR, line_ending::CRLF, line_ending::LF;
  struct {
    std::string in, out;
    line_ending::type type;
  } const cases[] = {
      {"", "", LF},
      {"a", "a", LF},
      {"\r\n\r\n\n", "\n\n\n", CRLF},
      {"\r\n\n\r", "\n\n\n", LF},  // three ties
      {"\r\r\n", "\n\n", CR},      // one of each: CR beats CRLF
      {"\r\r", "\n\n", CR},
      {"a\r\nb", "a\nb", CRLF},
      {"\n\r", "\n\n", LF},
      {"\r\r\r\n\r\n\n", "\n\n\n\n\n", CR},
      {"\ra\n", "\na\n", LF},  // not a CRLF
  };
  for (auto const& c : cases) {
    std::string text = c.in;
    line_ending::type type;
    text.erase(harmonize_line_endings(text.begin(), text.end(), &type), text.end());
    EXPECT_EQ(text, c.out);
    EXPECT_EQ(type, c.type) << testing::PrintToString(c.in);
    EXPECT_EQ(agreement::in_line_endings({c.in.begin(), c.in.end()}), "");
  }
  std::string text = "\r\n";
  line_ending::type* const no_type = nullptr;
  EXPECT_EQ(harmonize_line_endings(text.begin(), text.end(), no_type), text.begin() + 1);
}

TEST(line_ending, units_are_not_mistaken_for_bytes) {
  std::vector<char16_t> text = {0x0D0A, 0x0A0D, 0x010D, 0x000D, 0x0D00, 0x000A};
  auto const last = harmonize_line_endings(text.begin(), text.end(), nullptr);
  EXPECT_EQ(std::vector<char16_t>(text.begin(), last),
            (std::vector<char16_t>{0x0D0A, 0x0A0D, 0x010D, 0x000A, 0x0D00, 0x000A}));
}

TEST(line_ending, harmonize_units_agrees_on_every_short_text) {
  std::vector<char16_t> text;
  for (unsigned n = 0; n < 59049; ++n) {  // ten units, each CR, LF or a letter
    text.clear();
    for (unsigned rest = n; rest; rest /= 3) text.push_back(u"a\r\n"[rest % 3]);
    for (std::size_t before : {0, 7, 8, 13}) {
      auto longer = text;
      longer.insert(longer.begin(), before, u'x');
      ASSERT_EQ(agreement::in_line_endings(longer), "");
    }
  }
}

TEST(line_ending, harmonize_units_counts_beyond_sixteen_bits) {
  std::vector<char16_t> text(1 << 20, u'\n');
  auto const result = harmonize_units(text.data(), text.data() + text.size());
  EXPECT_EQ(result.ends, (line_ending::counts{0, 1 << 20, 0}));
  EXPECT_FALSE(result.ends.mixed());
}

}  // namespace
