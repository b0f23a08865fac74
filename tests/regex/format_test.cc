#include "regex/format.h"

#include "data_rows.h"
#include "platform/utf.h"

namespace {

std::string replace(char const* pattern, char const* format, char const* text) {
  std::u16string const source = unicode::to_utf16(text);
  std::u16string out;
  regex::replace(source.begin(), source.end(), pattern, format, std::back_inserter(out));
  return unicode::to_utf8(out);
}

TEST(replace, results_as_the_file_says) {
  for (auto const& c : data_rows("own_replacements.txt", "replacements"))
    EXPECT_EQ(replace(c[0].c_str(), c[1].c_str(), c[2].c_str()), c[3])
        << "pattern " << c[0] << ", format " << c[1] << ", text " << c[2];
}

TEST(replace, bytes_and_units_mix) {
  std::string const text = "\xc3\xa9x";
  std::string out;
  regex::replace(text.begin(), text.end(), "x", "\\U\xc3\xa9$0", std::back_inserter(out));
  EXPECT_EQ(out, "\xc3\xa9\xc3\xa9X");

  std::u16string wide;
  regex::fmt_t<char16_t, std::back_insert_iterator<std::u16string>> const format(
      u"\\U\u00e9\u00ff");
  regex::replace(text.begin() + 2, text.end(), regex::nfa<char16_t>(u"x"), format,
                 std::back_inserter(wide));
  EXPECT_EQ(wide, u"\u00c9\u0178");
}

TEST(replace, format_stops_where_told) {
  using out_t = std::back_insert_iterator<std::string>;
  std::string const text = "a";
  std::string_view const format = "x?1y/z";
  regex::fmt_t<char, out_t> parsed("");
  auto const stop = parsed.parse(format.data(), format.data() + format.size(), '/');
  EXPECT_EQ(stop - format.data(), 4);
  std::string out;
  regex::replace(text.begin(), text.end(), regex::nfa<char>("(a)"), parsed,
                 std::back_inserter(out));
  EXPECT_EQ(out, "xy");
}

TEST(replace, keeps_the_text_when_the_search_gives_up) {
  std::string const text = "x" + std::string(1000, 'a');
  std::string out;
  regex::limits allowed;
  allowed.steps = 10'000;
  regex::fmt_t<char, std::back_insert_iterator<std::string>> const format("y");
  regex::replace(text.begin(), text.end(), regex::nfa<char>("x|(a+)+b"), format,
                 std::back_inserter(out), allowed);
  EXPECT_EQ(out, "y" + text.substr(1));
}

TEST(replace, deeply_nested_formats_do_no_harm) {
  silenced_errors const quiet;
  EXPECT_EQ(replace("a", (std::string(100'000, '(') + "x").c_str(), "a").back(), 'x');
  EXPECT_NE(replace("(a)", repeated("?1\\U", 100'000).c_str(), "a"), "a");
}

}  // namespace
