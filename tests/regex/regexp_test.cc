#include "regex/regexp.h"

#include "platform/utf.h"
#include "regex/WynRegEx.h"
#include "regex/onig_replace.h"
#include "regex/oniguruma.h"
#include "source_tree.h"
#include "test.h"

using namespace regex;

namespace {

std::string replaced(std::string const& pattern, std::string const& text, std::string const& format,
                     std::string const& options, char const* indent = "") {
  auto const bits = snippet::options_from_string(options);
  onig::ptrn_t const ptrn(pattern.data(), pattern.data() + pattern.size(), bits);
  std::string out;
  onig::replace(text.data(), text.data() + text.size(), format.data(),
                format.data() + format.size(), ptrn, bits, indent, 0, std::back_inserter(out));
  return out;
}

std::string with_line_feeds(std::string s) {
  for (std::size_t at; (at = s.find("\\n")) != s.npos;) s.replace(at, 2, "\n");
  return s;
}

TEST(onig_replace, replacements_as_the_file_says) {
  std::ifstream file(test_data("replacement_formats.txt"));
  int count = 0;
  testing::internal::CaptureStderr();
  for (std::string line; std::getline(file, line);) {
    if (!line.starts_with('"')) continue;
    std::istringstream row(line);
    std::string field[4];
    for (auto& f : field) row >> std::quoted(f, '"', '\0');
    std::string const result = replaced(field[0], with_line_feeds(field[1]), field[2], "g");
    // Here a replacement that cannot be parsed takes the text with it.
    EXPECT_TRUE(result == with_line_feeds(field[3]) || result.empty()) << line << "\n" << result;
    count += !result.empty();
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "error in format string: (?0:a:b:c)\nerror in format string: (?1:a\n"
            "error in format string: (?1:a:b\nerror in format string: x\\\n");
  EXPECT_GT(count, 25);
}

TEST(onig_replace, options_indent_and_empty_matches) {
  EXPECT_EQ(replaced("A.b", "a\nb a\nb", "x\ny", "im", "  "), "x\n  y a\nb");
  EXPECT_EQ(replaced("x*", "aé", "-", "g"), "-a-é-");
  EXPECT_EQ(replaced("a b", "xab\xff", "-", "ge"), "x-\xff");
  EXPECT_EQ(errors_of([&] { EXPECT_EQ(replaced("(", "a", "-", ""), ""); }),
            "regex error: end pattern with unmatched parenthesis\n");
}

TEST(regexp, groups_names_and_wrong_bytes) {
  std::string const text =
      "\xff"
      "ab--cd";
  regexp::pattern_t const pattern("(?<w>[a-b]+)(-)*(?<w>c)(x)?(.)");
  auto const m = regexp::search(pattern, text.data(), text.data() + text.size());
  using captures = regexp::match_t::captures_t;
  EXPECT_EQ(
      m.captures(),
      (captures{{"0", "ab--cd"}, {"1", "ab"}, {"2", "-"}, {"3", "c"}, {"5", "d"}, {"w", "abc"}}));
  EXPECT_TRUE(m.empty(4));
  EXPECT_FALSE(m.did_match(4));
  EXPECT_EQ(m.begin(4), 7u);
  EXPECT_EQ(m.begin(5), 6u);
  auto const none = regexp::search(pattern, text.data(), text.data() + 3);
  EXPECT_FALSE(none);
  EXPECT_EQ(none.begin(), static_cast<std::size_t>(-1));
  EXPECT_EQ(none.size(), 0u);
  EXPECT_FALSE(regexp::search(regexp::pattern_t(), text.data(), text.data() + 3));
  std::string const trap(60, 'a');
  auto const over = regexp::search(regexp::pattern_t("(a|a)+b|c"), trap.data(), trap.data() + 60);
  EXPECT_FALSE(over);
  EXPECT_EQ(errors_of([&] { EXPECT_FALSE(regexp::pattern_t("a(")); }),
            "ERROR end pattern with unmatched parenthesis (a()\n");
}

TEST(regexp, finds_in_utf8_what_is_found_in_utf16) {
  char const* const patterns[] = {"a",    "(a|é)+", "(.)\\1",  "[^a]+$",
                                  "\\w+", "(?i:É)", "(a)?(😀)", "(?<=é)."};
  char const* const pieces[] = {"a", "é", "É", "😀", "\n", "b"};
  std::mt19937 random(1);
  for (char const* source : patterns) {
    auto const units = unicode::to_utf16(source);
    oniguruma::ptrn_t const wide(units.data(), units.data() + units.size(), 0);
    regexp::pattern_t const narrow(source);
    for (int round = 0; round < 300; ++round) {
      std::string text;
      for (unsigned n = random() % 12; n > 0; --n) text += pieces[random() % std::size(pieces)];
      auto const wide_text = unicode::to_utf16(text);
      auto const m = regexp::search(narrow, text.data(), text.data() + text.size());
      auto const w = oniguruma::find(wide_text.data(), 0, std::ssize(wide_text), &wide);
      ASSERT_EQ(m.size(), w.size()) << source << " in " << text;
      for (std::size_t i = 0; i < m.size(); ++i) {
        ASSERT_EQ(m.did_match(i), w.is_set(i)) << source << " in " << text;
        if (!m.did_match(i)) continue;
        EXPECT_EQ(unicode::to_utf16(text.substr(0, m.begin(i))).size(), std::size_t(w.begin(i)));
        EXPECT_EQ(unicode::to_utf16(text.substr(0, m.end(i))).size(), std::size_t(w.end(i)));
      }
    }
  }
}

TEST(wyn_regex, is_equal_and_components) {
  EXPECT_TRUE(isEqualToRegEx("file.txt", "\\.txt$"));
  EXPECT_FALSE(isEqualToRegEx("file.txt", "!\\.txt$"));
  EXPECT_TRUE(isEqualToRegEx("a\nb", "^b"));
  EXPECT_FALSE(isEqualToRegEx("a", ""));
  EXPECT_FALSE(isEqualToRegEx("a", "!"));
  testing::internal::CaptureStderr();
  EXPECT_TRUE(isEqualToRegEx("a", "("));
  EXPECT_TRUE(isEqualToRegEx("b", "("));
  EXPECT_FALSE(isEqualToRegEx("a", "!("));
  std::string const told = testing::internal::GetCapturedStderr();
  std::string const once =
      "Quirnote regular expression error: “end pattern with unmatched parenthesis for pattern (”\n";
  EXPECT_EQ(told, once + once);
  EXPECT_EQ(componentsInRegEx("x=é", "(\\w)(z)?=(.)"),
            (std::vector<std::string>{"x=é", "x", "", "é"}));
  EXPECT_EQ(componentsInRegEx("x", "y"), std::nullopt);
}

}  // namespace
