#include "encoding/estimate.h"
#include "encoding/encoding_cases.h"
#include "encoding/estimate_buffer.h"
#include "encoding/line_ending.h"

namespace {

using namespace encoding;

charset_t estimate_both(std::string const& text) {
  charset_t const charset = estimate(text.begin(), text.end());
  auto const* bytes = reinterpret_cast<unsigned char const*>(text.data());
  EXPECT_EQ(charset, estimate_buffer(bytes, text.size())) << testing::PrintToString(text);
  return charset;
}

TEST(estimate, rules) {
  for (auto const& c : data_rows("encodings.txt", "estimates")) {
    charset_t const charset = charset_named(c[1]);
    EXPECT_EQ(estimate_both(c[0]), charset) << testing::PrintToString(c[0]);
    // With much ASCII before or after it the answer is the same, unless it hangs on a mark.
    if (c[0].starts_with('\xFE') || c[0].starts_with('\xFF')) continue;
    for (std::size_t size = 50; size < 140; ++size) {
      EXPECT_EQ(estimate_both(std::string(size, 'x') + c[0]), charset) << c[0];
      EXPECT_EQ(estimate_both(c[0] + std::string(size, 'x')), charset) << c[0];
    }
  }
}

TEST(estimate, without_statistics_every_score_is_nan) {
  std::string const text = "\x8E\xE9";
  EXPECT_TRUE(Probability.empty());
  EXPECT_EQ(N, 0u);
  EXPECT_TRUE(std::isnan(probabilityFor(text.begin(), text.end())));
}

TEST(estimate, statistics_decide_by_the_greater_score) {
  character_weights const weights = {{0x20AC, 3.f}, {0xC4, 2.f}, {0xE9, 1.f}, {0x41, 100.f}};
  auto const pick = [&](std::string const& s) {
    return estimate_8bit(s.begin(), s.end(), weights, 4);
  };
  EXPECT_EQ(pick("\x80"), CP1252);    // euro sign against A umlaut
  EXPECT_EQ(pick("\x8E"), MacRoman);  // e acute against Z caron
  EXPECT_EQ(pick("\xDB"), MacRoman);  // euro sign against U circumflex
  EXPECT_EQ(pick("\xE9"), Latin1);    // e acute against E grave
  EXPECT_EQ(pick("\xA1"), Latin1);    // a draw
  EXPECT_EQ(pick("\x9E"), MacRoman);  // a draw
  std::string const text = "A\xE9\xC4\xC4";
  EXPECT_EQ(probabilityFor(text.begin(), text.end(), weights, 4), 1.25f);  // ASCII counts nothing
}

TEST(user_defaults, name_charsets_and_line_ends) {
  EXPECT_EQ(charset_for_key("utf-16-le"), UTF16LE);
  EXPECT_EQ(charset_for_key("cp-1252"), CP1252);
  EXPECT_EQ(charset_for_key("UTF8"), std::nullopt);
  EXPECT_EQ(line_ending::type_for_key("crlf"), line_ending::CRLF);
  EXPECT_EQ(line_ending::type_for_key("LF"), std::nullopt);
}

}  // namespace
