#include "regex/format.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>

#include "platform/utf.h"

namespace {

std::string replace(char const* pattern, char const* format, char const* text) {
  std::u16string const source = unicode::to_utf16(text);
  std::u16string out;
  regex::replace(source.begin(), source.end(), pattern, format, std::back_inserter(out));
  return unicode::to_utf8(out);
}

struct replace_case {
  char const *pattern, *format, *text, *result;
};

TEST(replace, table) {
  replace_case const cases[] = {
      {"b", "x", "abcb", "axcx"},
      {"b", "", "abcb", "ac"},
      {"(a)(b)", "$2$1$3", "ab-ab", "ba-ba"},
      {"a", "[$0]", "cac", "c[a]c"},
      {"a", "$", "a", "$"},
      {"(a)", "$1$x", "a", "a$x"},
      {"a", "\\$1\\t\\x41\\n", "a", "$1\tA\n"},
      {"a", "\\", "a", "\\"},
      {"x*", "-", "axb", "-a--b"},
      {"$", ";", "a\nb", "a;\nb;"},
      {"^", "> ", "a\n\nb", "> a\n> \n> b"},
      {"^", ">", "", ">"},
      // Case
      {"\\w+", "\\U$0", "ab cd", "AB CD"},
      {"(\\w)(\\w*)", "\\U$1\\E\\L$2\\E!", "aBC", "Abc!"},
      {"\\w+", "\\Ux$0(y)\\Ez", "éß", "XÉßYz"},
      {"a", "\\Eb", "a", "Eb"},
      // Conditions
      {"(a)|b", "?1x:y", "ab", "xy"},
      {"(a)|b", "(?1x:y)z", "ab", "xzyz"},
      {"(a)|b", "(?1x)z", "ab", "xzz"},
      {"(a)|b", "?1x", "ab", "x"},
      {"(a)|b", "?1:y", "ab", "y"},
      {"(a)|(b)|c", "?1x:?2y:z", "abc", "xyz"},
      {"(a)(b)?|c", "?1?2x:y:z", "ab a c", "x y z"},
      {"(a)|b", "?1\\:\\(:\\?", "ab", ":(?"},
      {"(a)|b", "\\U?1x:y\\Ez", "ab", "XzYz"},
      {"(a)|b", "?1\\Ux:y", "ab", "Xy"},
      {"a()|b", "?1x:y", "ab", "xy"},
      {"(a)", "?", "a", "?"},
      {"(a)", "?x", "a", "?x"},
      {"a", "b)c", "a", "b)c"},
      {"a", "(b(c)d)", "a", "bcd"},
      // What the editor itself replaces by
      {"\\s+\n", "\n", "a \n\nb\t\n", "a\n\nb\n"},
      {" +\n", "\n", "a  \n  b \n", "a\n  b\n"},
      {"(\\A)?\n(\n+)?(\\z)?", "?1:?3\n:?2\n\n: ", "\na\nb\n\n\nc\n", "a b\n\nc\n"},
      {"(\\A\\s+)?(?(1):(?:\\s)+)(\\z)?", "?1$1:?2: ", "  a  b \t c  ", "  a b c"},
      {"^(/\\*(?=\\t)|\\*/|//(?=\\t))?[\\t ](.*)$", "$1$2", "\t\ta\n//\tb\nc\n d",
       "\ta\n//b\nc\nd"},
      {"^( {,4}|\\t)(.*)$", "$2", "      a\n  b\nc", "  a\nb\nc"},
      {"^(\\s*)(.+)?$", "(?2    :)$1$2", "a\n\n  b", "    a\n\n      b"},
      {"^(/\\*(?:\\t|$)|\\*/(?:\\t|$))?(\\s*)(.+)?$", "$1(?3\\t:)$2$3", "/*\ta\n\n b\n*/",
       "/*\t\ta\n\n\t b\n*/"},
      {"^([\\t ]*).*$", "$1", "\t  a b", "\t  "},
      {"^(?:/\\*(?=\\t)|\\*/|//(?=\\t))?([\\t]*).*$", "$1", "//\ta", "\t"},
  };
  for (auto const& c : cases) {
    EXPECT_EQ(replace(c.pattern, c.format, c.text), c.result)
        << "pattern " << c.pattern << ", format " << c.format << ", text " << c.text;
  }
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
  testing::internal::CaptureStderr();
  EXPECT_EQ(replace("a", (std::string(100'000, '(') + "x").c_str(), "a").back(), 'x');
  std::string conditions;
  for (int i = 0; i < 100'000; ++i) conditions += "?1\\U";
  EXPECT_NE(replace("(a)", conditions.c_str(), "a"), "a");
  testing::internal::GetCapturedStderr();
}

}  // namespace
