#include "platform/unicode.h"

#include <rapidcheck.h>

#include "data_rows.h"
#include "platform/utf.h"

namespace {

TEST(unicode, classes_below_128_are_those_of_the_c_library) {
  for (int c = 0; c < 128; ++c) {
    auto const u = static_cast<char16_t>(c);
    EXPECT_EQ(unicode::is_lower(u), std::islower(c) != 0) << c;
    EXPECT_EQ(unicode::is_upper(u), std::isupper(c) != 0) << c;
    EXPECT_EQ(unicode::is_alpha(u), std::isalpha(c) != 0) << c;
    EXPECT_EQ(unicode::is_alnum(u), std::isalnum(c) != 0) << c;
    EXPECT_EQ(unicode::is_digit(u), std::isdigit(c) != 0) << c;
    EXPECT_EQ(unicode::is_space(u), std::isspace(c) != 0) << c;
    EXPECT_EQ(unicode::to_lower(u), std::tolower(c)) << c;
    EXPECT_EQ(unicode::to_upper(u), std::toupper(c)) << c;
  }
}

TEST(unicode, classes_from_128_on) {
  struct {
    char16_t unit;
    std::string classes;  // of Lower, Upper, Alpha, alNum, Digit, Space
  } const cases[] = {
      {0x00E9, "LAN"}, {0x00C9, "UAN"}, {0x01C5, "UAN"},  // title case counts as upper
      {0x0301, "AN"},                                     // a mark counts as a letter
      {0x00AA, "AN"},                                     // ordinal: a letter without case
      {0x0663, "ND"},  {0x00BD, "N"},   {0x00A0, "S"},   {0x3000, "S"}, {0x0085, ""}, {0x2028, ""},
      {0x200B, ""},    {0x00B7, ""},    {0x4E2D, "AN"},  {0xD83D, ""},  {0xDE00, ""}, {0xFFFF, ""},
  };
  for (auto const& c : cases) {
    std::string classes;
    if (unicode::is_lower(c.unit)) classes += 'L';
    if (unicode::is_upper(c.unit)) classes += 'U';
    if (unicode::is_alpha(c.unit)) classes += 'A';
    if (unicode::is_alnum(c.unit)) classes += 'N';
    if (unicode::is_digit(c.unit)) classes += 'D';
    if (unicode::is_space(c.unit)) classes += 'S';
    EXPECT_EQ(classes, c.classes) << std::hex << int(c.unit);
  }
}

TEST(unicode, case_of_one_unit) {
  struct {
    char16_t unit, lower, upper;
  } const cases[] = {
      {u'é', u'é', u'É'},       {u'ß', u'ß', u'ß'},  // upper case is two units
      {u'İ', u'İ', u'İ'},                            // lower case is two units
      {u'ı', u'ı', u'I'},                            // the root locale
      {0x01C5, 0x01C6, 0x01C4},                      // Dž
      {0xD801, 0xD801, 0xD801},                      // half of a Deseret letter
  };
  for (auto const& c : cases) {
    EXPECT_EQ(unicode::to_lower(c.unit), c.lower) << std::hex << int(c.unit);
    EXPECT_EQ(unicode::to_upper(c.unit), c.upper) << std::hex << int(c.unit);
  }
  EXPECT_EQ(unicode::uppercase("straße"), "STRASSE");
  EXPECT_EQ(unicode::lowercase("ΟΔΟΣ"), "οδος");
}

TEST(unicode, width) {
  for (char32_t c : {U'中', U'한', U'Ａ', U'😀', U'　'}) EXPECT_TRUE(unicode::is_wide(c));
  for (char32_t c : {U'a', U'é', U'ｱ', U'α', U'\u0301'}) EXPECT_FALSE(unicode::is_wide(c));
  for (char32_t c : {U'\u0301', U'\u200D', U'\uFE0F', U'\u1160', U'\U000E0100'})
    EXPECT_TRUE(unicode::is_zero_width(c)) << std::hex << std::uint32_t(c);
  for (char32_t c : {U'a', U' ', U'\u00AD', U'\u0903', U'\u0600', U'\u1100'})
    EXPECT_FALSE(unicode::is_zero_width(c));
}

TEST(utf, invalid_bytes_become_replacement_characters) {
  for (auto const& row : data_rows("clusters.txt", "utf-8")) {
    std::istringstream hexadecimal(row[1]);
    std::u16string expected;
    for (unsigned unit; hexadecimal >> std::hex >> unit;) expected += static_cast<char16_t>(unit);
    EXPECT_EQ(unicode::to_utf16(row[0]), expected) << testing::PrintToString(row[0]);
  }
}

TEST(utf, any_units_survive_the_way_through_utf8) {
  rc::check([](std::vector<std::uint16_t> const& units, std::vector<std::uint8_t> const& choice) {
    std::u16string text(units.begin(), units.end());
    for (std::size_t i = 0; i < text.size() && i < choice.size(); ++i)
      if (choice[i] % 2) text[i] = static_cast<char16_t>(0xD800 | (text[i] & 0x7FF));
    RC_ASSERT(unicode::to_utf16(unicode::to_utf8(text)) == text);
  });
}

}  // namespace
