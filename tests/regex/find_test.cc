#include "regex/find.h"

#include "platform/utf.h"
#include "source_tree.h"
#include "test.h"

namespace {

/// "0-3 1:1-2": the whole match and the groups that are set; "none"; "gave up".
template <class Iterator>
std::string describe(regex::match<Iterator> const& m, Iterator first) {
  if (!m) return m.gave_up() ? "gave up" : "none";
  std::string result;
  for (std::size_t n = 0; n < m.size(); ++n) {
    if (!m.is_set(n)) continue;
    if (n > 0) result += " " + std::to_string(n) + ":";
    result += std::to_string(std::distance(first, m.begin(n))) + "-" +
              std::to_string(std::distance(first, m.end(n)));
  }
  return result;
}

std::string find(char const* pattern, std::u16string const& text) {
  regex::nfa<char> const nfa(pattern);
  char16_t const* const first = text.data();
  return describe(regex::find(first, first + text.size(), nfa), first);
}

std::string find_backwards(char const* pattern, std::u16string const& text) {
  return describe(regex::find(text.rbegin(), text.rend(), regex::nfa<char>(pattern)),
                  text.rbegin());
}

std::u16string unescaped(std::string const& text) {
  std::u16string const units = unicode::to_utf16(text);
  std::u16string result;
  for (auto it = units.begin(); it != units.end();) {
    char16_t unit = *it++;
    if (unit == u'\\') it = regex::parse_escape(it, units.end(), unit);
    result += unit;
  }
  return result;
}

TEST(find, matches_as_the_file_says) {
  std::ifstream file(test_data("regex_find.txt"));
  auto direction = &find;
  int count = 0;
  testing::internal::CaptureStderr();
  for (std::string line; std::getline(file, line);) {
    if (line == "backwards") direction = &find_backwards;
    if (!line.starts_with('"')) continue;
    std::istringstream row(line);
    std::string pattern, text, found;
    row >> std::quoted(pattern, '"', '\0') >> std::quoted(text, '"', '\0') >> std::ws;
    std::getline(row, found);
    EXPECT_EQ(direction(pattern.c_str(), unescaped(text)), found) << line;
    ++count;
  }
  testing::internal::GetCapturedStderr();
  EXPECT_GT(count, 150);
}

TEST(find, patterns_and_texts_of_either_unit_over_any_bidirectional_iterator) {
  regex::nfa<char> const narrow("b+");
  regex::nfa<char16_t> const wide(u"[\u03b1-\u03c9]+|b+");
  std::string const bytes = "abbc";
  std::u16string const units = u"a\u03b2\u03b3";
  std::list<char16_t> const list(units.begin(), units.end());

  EXPECT_EQ(describe(regex::find(bytes.begin(), bytes.end(), narrow), bytes.begin()), "1-3");
  EXPECT_EQ(describe(regex::find(bytes.begin(), bytes.end(), wide), bytes.begin()), "1-3");
  EXPECT_EQ(describe(regex::find(units.begin(), units.end(), wide), units.begin()), "1-3");
  EXPECT_EQ(describe(regex::find(list.begin(), list.end(), wide), list.begin()), "1-3");
  EXPECT_EQ(describe(regex::find(list.rbegin(), list.rend(), wide), list.rbegin()), "0-2");
  EXPECT_EQ(describe(regex::find(units.begin(), units.end(), narrow), units.begin()), "none");
}

TEST(find, bytes_beyond_ascii_are_no_characters) {
  std::string const text = "caf\xc3\xa9!";
  auto const m = regex::find(text.begin(), text.end(), regex::nfa<char>("\\w+"));
  EXPECT_EQ(describe(m, text.begin()), "0-3");
  auto const n = regex::find(text.begin(), text.end(), regex::nfa<char>("\xc3\xa9"));
  EXPECT_EQ(describe(n, text.begin()), "3-5");
  EXPECT_FALSE(regex::find(text.begin(), text.end(), regex::nfa<char>("(?i:\\xe3)")));
}

std::string matches(char const* pattern, std::u16string const& text) {
  std::string result;
  regex::find_all(text.begin(), text.end(), regex::nfa<char>(pattern), [&](auto const& m) {
    result += (result.empty() ? "" : " ") + describe(m, text.begin());
  });
  return result;
}

TEST(find_all, steps_on_after_empty_matches_and_sees_the_text_before) {
  EXPECT_EQ(matches("a", u"aba"), "0-1 2-3");
  EXPECT_EQ(matches("a*", u"aab"), "0-2 2-2");
  EXPECT_EQ(matches("a*", u""), "0-0");
  EXPECT_EQ(matches("^", u"a\n\nb"), "0-0 2-2 3-3");
  EXPECT_EQ(matches("$", u"a\nb"), "1-1 3-3");
  EXPECT_EQ(matches("^a", u"aaa\naa"), "0-1 4-5");
  EXPECT_EQ(matches("\\Aa", u"aaa"), "0-1");
  EXPECT_EQ(matches("(?<=a)a", u"aaa"), "1-2 2-3");
  EXPECT_EQ(matches("\\<\\w", u"ab cd"), "0-1 3-4");
  EXPECT_EQ(matches("(a)|b", u"ab"), "0-1 1:0-1 1-2");
}

TEST(limits, groups_beyond_63_capture_nothing) {
  std::string pattern, text;
  for (int i = 0; i < 70; ++i) pattern += "(.)", text += static_cast<char>('0' + i);
  testing::internal::CaptureStderr();
  regex::nfa<char> const nfa((pattern + "\\70").c_str());
  EXPECT_NE(testing::internal::GetCapturedStderr(), "");
  regex::nfa<char> const plain(pattern.c_str());
  auto const m = regex::find(text.begin(), text.end(), plain);
  ASSERT_TRUE(m);
  EXPECT_EQ(m.end() - text.begin(), 70);
  EXPECT_EQ(*m.begin(63), text[62]);
  EXPECT_FALSE(m.is_set(64));
  EXPECT_FALSE(regex::find(text.begin(), text.end(), nfa));
}

TEST(limits, recursion_beyond_63_levels_is_as_if_absent) {
  auto const nested = [](int depth) {
    return std::u16string(depth, u'(') + std::u16string(depth, u')');
  };
  EXPECT_EQ(errors_of([&] { EXPECT_EQ(find("\\((?R)?\\)", nested(63)), "0-126"); }), "");
  testing::internal::CaptureStderr();
  EXPECT_EQ(find("\\((?R)?\\)", nested(64)), "0-128");
  EXPECT_EQ(find("\\((?R)?\\)", nested(65)), "1-129");
  EXPECT_EQ(find("(?R)?a", u"ba"), "1-2");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "*** ignoring (?R) -- too many recursions\n"
            "*** ignoring (?R) -- too many recursions\n"
            "*** ignoring (?R) -- too many recursions\n");
}

TEST(limits, endless_backtracking_is_given_up) {
  EXPECT_EQ(find("(a+)+b", std::u16string(5000, u'a')), "gave up");
  std::u16string const text = std::u16string(300, u'a') + u"c";
  regex::limits allowed;
  allowed.steps = 100'000;
  testing::internal::CaptureStderr();
  for (char const* pattern :
       {"(a|a)*b", "(?:a*)*b", "(a|aa)+$", "(?R)?(?R)?b", "(?:(?=a*)a|a)*b"}) {
    regex::nfa<char> const nfa(pattern);
    EXPECT_TRUE(regex::find(text.begin(), text.end(), nfa, allowed).gave_up()) << pattern;
  }
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(find("(?>a+)+b", text), "none");
}

TEST(limits, budget_is_configurable_and_grows_with_the_text) {
  std::u16string const text = std::u16string(100'000, u'a') + u"b";
  regex::nfa<char> const nfa("(?:aa|a)*b");
  regex::limits allowed;
  allowed.steps = 1000;
  EXPECT_TRUE(regex::find(text.begin(), text.end(), nfa, allowed));
  allowed.steps_per_unit = 1;
  auto const m = regex::find(text.begin(), text.end(), nfa, allowed);
  EXPECT_FALSE(m);
  EXPECT_TRUE(m.gave_up());
  allowed = {};
  allowed.bytes = 10'000;
  EXPECT_TRUE(regex::find(text.begin(), text.end(), nfa, allowed).gave_up());

  int seen = 0;
  allowed = {};
  allowed.steps = allowed.steps_per_unit = 0;
  regex::find_all(
      text.begin(), text.end(), regex::nfa<char>("a"), [&](auto&) { ++seen; }, allowed);
  EXPECT_EQ(seen, 0);
}

TEST(limits, deep_patterns_need_no_deep_stack) {
  silenced_errors const quiet;
  std::string const deep(100'000, '('), stars(100'000, '*');
  std::string const alternatives = "x" + repeated("|y", 100'000);
  EXPECT_EQ(find((deep + "a").c_str(), u"a"), "none");
  EXPECT_EQ(find(("a" + stars + "b").c_str(), u"aab"), "0-3");
  EXPECT_EQ(find((alternatives + "|z").c_str(), u"z"), "0-1");
  std::string const looks = repeated("(?=(?<=", 125) + std::string(250, ')');
  EXPECT_EQ(find((looks + "a").c_str(), u"a"), "0-1");
}

}  // namespace
