#include <gtest/gtest.h>

#include <cmath>

#include "encoding/estimate.h"
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

TEST(Estimate, Rules) {
  using namespace std::string_literals;
  struct {
    std::string in;
    charset_t charset;
  } const cases[] = {
      {"", ASCII},
      {"plain\n", ASCII},
      {"\0a\0b"s, ASCII},  // UTF-16 without a mark
      {"\xEF\xBB\xBF", UTF8},
      {"\xEF\xBB", Latin1},
      {"caf\xC3\xA9", UTF8},
      {"caf\xC3\xA9 \xA9", Latin1},
      {"\xC0\x80 \xF7\xBF\xBF\xBF", UTF8},  // too long, and above U+10FFFF
      {"\xF8\x88\x80\x80\x80 \xFD\xBF\xBF\xBF\xBF\xBF", UTF8},
      {"\xFE\xA0\xA0\xA0\xA0\xA0\xA0", Latin1},  // more than six bytes
      {"\xE2\x82", MacRoman},                    // cut short
      {"\xFE\xFF\0a"s, UTF16BE},
      {"\xFF\xFE", UTF16LE},
      {"\xFF\xFE"
       "a\0b"s,
       Latin1},  // of odd length
      {"\xE9t\xE9", Latin1},
      {"\x8Et\x8E", MacRoman},
      {"\x93quoted\x94", MacRoman},  // CP1252 is never detected
      {"\xA0", Latin1},
      {"\xE9\x9F", MacRoman},
  };
  for (auto const& c : cases) {
    EXPECT_EQ(estimate_both(c.in), c.charset) << testing::PrintToString(c.in);
    // With much ASCII before or behind it the answer is the same, unless it hangs on a mark.
    if (c.in.starts_with('\xFE') || c.in.starts_with('\xFF')) continue;
    for (std::size_t size = 50; size < 140; ++size) {
      EXPECT_EQ(estimate_both(std::string(size, 'x') + c.in), c.charset) << c.in;
      EXPECT_EQ(estimate_both(c.in + std::string(size, 'x')), c.charset) << c.in;
    }
  }
}

TEST(Estimate, WithoutStatisticsEveryScoreIsNaN) {
  std::string const text = "\x8E\xE9";
  EXPECT_TRUE(Probability.empty());
  EXPECT_EQ(N, 0u);
  EXPECT_TRUE(std::isnan(probabilityFor(text.begin(), text.end())));
}

TEST(Estimate, StatisticsDecideByTheGreaterScore) {
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

TEST(UserDefaults, NameCharsetsAndLineEnds) {
  EXPECT_EQ(charset_for_key("utf-16-le"), UTF16LE);
  EXPECT_EQ(charset_for_key("cp-1252"), CP1252);
  EXPECT_EQ(charset_for_key("UTF8"), std::nullopt);
  EXPECT_EQ(line_ending::type_for_key("crlf"), line_ending::CRLF);
  EXPECT_EQ(line_ending::type_for_key("LF"), std::nullopt);
}

}  // namespace
