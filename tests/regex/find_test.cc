#include "regex/find.h"

#include <gtest/gtest.h>

#include <iterator>
#include <list>
#include <string>

#include "platform/utf.h"

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

struct find_case {
  char const* pattern;
  char const* text;
  char const* found;
};

find_case const cases[] = {
    // Units and classes
    {"", "abc", "0-0"},
    {"b", "abc", "1-2"},
    {"a.c", "a\nc abc", "4-7"},
    {"(?s:a.c)", "a\nc abc", "0-3"},
    {"a\\.c", "abc a.c", "4-7"},
    {"\\Qa.(\\Eb", "a.(b", "0-4"},
    {"\\Qa.", "xa.", "1-3"},
    {"\\t\\n\\x41\\x{0042}\\0103\\e", "\t\nABC\x1b", "0-6"},
    {"\\x{20ac}", "1 €", "2-3"},
    {"\\0", "a", "none"},
    {"\\w+", " fé_1-", "1-5"},
    {"\\W+", "ab- \nc", "2-5"},
    {"\\s+", "a\n \t\nb", "2-4"},
    {"\\S+", " \n ", "1-2"},
    {"\\d+\\D", "a12b", "1-4"},
    {"\\u\\l+", "abCde", "2-5"},
    {"\\U\\L", "abC", "1-3"},
    {"\\u", "éÉ", "1-2"},
    {"[a-c]+", "xxabcd", "2-5"},
    {"[^a-c]+", "abxyc", "2-4"},
    {"[-a]+", "b-a-", "1-4"},
    {"[a-]+", "b-a-", "1-4"},
    {"[\\d-]+", "a1-2", "1-4"},
    {"[\\w.]+", " a.b ", "1-4"},
    {"[^\\w.]+", "a.-!b", "2-4"},
    {"[^\\W]", "-a", "1-2"},
    {"[\\]]", "a]", "1-2"},
    {"[\\x41-\\x43]", "xB", "1-2"},
    {"[\\t-\\r]", "a\vb", "1-2"},
    {"[[:alpha:][:digit:]]+", "-a1-", "1-3"},
    {"[[:^alpha:]]+", "ab12c", "2-4"},
    {"[[:xdigit:]]+", "xyBEEg", "2-5"},
    {"[[:space:]]", "\n\f", "1-2"},
    {"[[:blank:]]", "\n\f\t", "2-3"},
    {"[]a", "a", "none"},
    {"[^]a", "\na", "0-2"},
    {"[z-a]", "az", "none"},
    {"]", "a]", "1-2"},
    {"[\\xe0-\\xf6]", "aéb", "1-2"},
    // Repeats
    {"a*", "aab", "0-2"},
    {"a+", "baab", "1-3"},
    {"ba?", "bb", "0-1"},
    {"a{2}", "aaa", "0-2"},
    {"a{2,}", "baaa", "1-4"},
    {"a{2,3}", "aaaa", "0-3"},
    {"a{,2}b", "aaab", "1-4"},
    {"a{,}b", "aaab", "0-4"},
    {"a{2,5}?", "aaaa", "0-2"},
    {"a{2,5}?b", "aaab", "0-4"},
    {"a{5,2}", "aaaaaa", "0-2"},
    {"a{0}b", "ab", "1-2"},
    {"(?:ab){2,3}", "abababab", "0-6"},
    {"(?:ab){2,3}?$", "ababab", "0-6"},
    {"(?:ab){0}c", "abc", "2-3"},
    {"a.*c", "abcbcb", "0-5"},
    {"a.*?c", "abcbcb", "0-3"},
    {"a.*\nb", "axx\nb", "0-5"},
    {"(?:a{2}b)*c", "aabaabc", "0-7"},
    {"(?:(?:ab?){2}c)+", "abacaac", "0-7"},
    {"a**b", "aab", "0-3"},
    {"a+?+b", "aab", "0-3"},
    // Groups
    {"(a)(b)?", "a", "0-1 1:0-1"},
    {"(a|b)*", "abab", "0-4 1:3-4"},
    {"((a)|b)*", "ab", "0-2 1:1-2 2:0-1"},
    {"(a*)*", "aa", "0-2 1:2-2"},
    {"(a*)+", "b", "0-0 1:0-0"},
    {"(a|)+b", "aab", "0-3 1:2-2"},
    {"(?:a|(b))c", "bc", "0-2 1:0-1"},
    {"(a+)\\1", "aaaaa", "0-4 1:0-2"},
    {"(a)?\\1b", "ab", "none"},
    {"(?:(a)|b)\\1", "ba", "none"},
    {"(a)\\8", "a8", "0-2 1:0-1"},
    {"\\8", "8", "0-1"},
    {"(a)\\10", "aa0", "0-3 1:0-1"},
    {"(?i:(a)\\1)", "aA", "0-2 1:0-1"},
    {"(a\\1?)+", "aaa", "0-3 1:1-3"},
    {"a|b|cd", "xcd", "1-3"},
    {"(?:a|ab)(?:c|bcd)", "abcd", "0-4"},
    {"ab|", "ab", "0-2"},
    {"|ab", "ab", "0-0"},
    // Options
    {"(?i:aBc)", "xABC", "1-4"},
    {"(?i:a)b", "AB", "none"},
    {"(?i:a(?-i:b)c)", "AbC", "0-3"},
    {"(?i:a(?-i:b)c)", "ABC", "none"},
    {"(?i:a(?i:b)c)d", "ABCd", "0-4"},
    {"(?-i:a)b", "aB", "none"},
    {"(?i:É)", "é", "none"},
    {"(?i:\\xc9)", "é", "0-1"},
    {"(?:a|b)", "b", "0-1"},
    {"(?mx:a b)", "a b", "0-3"},
    // Anchors
    {"^b", "a\nb", "2-3"},
    {"a$", "ab\na\n", "3-4"},
    {"$", "ab", "2-2"},
    {"^$", "a\n\nb", "2-2"},
    {"^$", "a\n", "2-2"},
    {"\\Ab", "a\nb", "none"},
    {"\\Aa", "aa", "0-1"},
    {"a\\z", "a\na", "2-3"},
    {"\\<\\w", " ab", "1-2"},
    {"\\w\\>", "ab c", "1-2"},
    {"\\>|$", "foo bar", "3-3"},
    {"\\bb", "ab b", "3-4"},
    {"\\Bb", "b ab", "3-4"},
    {"(?:^a|^b)c", "ac\nbc", "0-2"},
    {"(^|x)a", "ba\na", "3-4 1:3-3"},
    // Look-around and groups without backtracking
    {"a(?=b)", "acab", "2-3"},
    {"a(?!b)", "abac", "2-3"},
    {"(?=(a+))a", "aa", "0-1 1:0-2"},
    {"(?!(a)b)a", "ac", "0-1"},
    {"(?<=a)b", "bab", "2-3"},
    {"(?<!a)b", "abb", "2-3"},
    {"(?<=^a)b", "ab", "1-2"},
    {"(?<=(ab))c", "abc", "2-3"},
    {"(?<=a.*)c", "abxc", "3-4"},
    {"(?<=\\1(a))b", "aab", "none"},
    {"(?<=(a)\\1)b", "aab", "none"},
    {"(?<=(?:ab|b){2})c", "babc abbc", "3-4"},
    {"(?<=a(?=bc)b)c", "abc", "2-3"},
    {"(?<=a(?!bd)b)[cd]", "abd abc", "6-7"},
    {"(?<!^|a)b", "babcb", "4-5"},
    {"(?<=(?>a|ba))c", "bac", "2-3"},
    {"(?<=[^b]{2}?)c", "abcaac", "5-6"},
    {"(?<=a{2,}?x)c", "axc aaxc", "7-8"},
    {"(?<=a*?b)c", "aabc", "3-4"},
    {"(?<=(?:ab)*?x)c", "ababxc", "5-6"},
    {"(?=(?!b)a|c)\\w", "bac", "1-2"},
    {"(?>a*)ab", "aaab", "none"},
    {"(?>a|ab)c", "abc", "none"},
    {"(?>(a+))b", "aab", "0-3 1:0-2"},
    {"(?:(?>a+)|b)+c", "aabac", "0-5"},
    {"(?>a(?>b|bc))d|abcd", "abcd", "0-4"},
    // Conditions and recursion
    {"(<)?a(?(1)>:!)", "<a!", "1-3"},
    {"(<)?a(?(1)>:!)", "<a>", "0-3 1:0-1"},
    {"(?(9)a:b)", "ab", "1-2"},
    {"(?(1)a|b:c|d)", "bd", "1-2"},
    {"\\((?:[^()]|(?R))*\\)", "((a)(b)", "1-4"},
    {"\\((?:[^()]|(?R))*\\)", "x(a(b)c(d(e)))y", "1-14"},
    {"(a)(?R)?b", "aabb", "0-4 1:0-1"},
    {"(\\w)(?:(?R)|\\w?)\\1", "xabcba", "1-6 1:1-2"},
    {"(?i:a(?R)?b)c", "abc", "0-3"},
    {"x(?i:a(?R)?b)", "xAxABb", "0-6"},
    {"x(?i:a(?R)?b)", "xAXABb", "none"},
    {"(?:a{2}(?R)?b){2}", "aabaab", "0-6"},
    {"(?:a{2}(?R)?b){2}", "aaaabaabbaab", "0-12"},
    {"(?<=<(?R)?>)x|ab", "<ab>x", "1-3"},
    {"(?<=<(?R)>)x|bc", "<bc>x", "1-3"},
    {"(?<=-(?R)-)x|(?<=y)bc", "-bc- ybc -bc-x", "6-8"},
    // Not well formed: another meaning, but never a fault
    {"*a", "a", "0-1"},
    {"a|*", "b", "0-0"},
    {"(a", "a", "0-1 1:0-1"},
    {"a)", "a)", "0-2"},
    {"[a", "a", "0-1"},
    {"a\\", "a\\", "0-2"},
    {"a{2", "aa", "0-2"},
    {"(?<x>a)", "<x>a", "0-4"},
    {"[[:nothing:]a]", "a", "0-1"},
    {"\\x{41", "A", "0-1"},
};

TEST(find, table) {
  testing::internal::CaptureStderr();
  for (auto const& c : cases) {
    EXPECT_EQ(find(c.pattern, unicode::to_utf16(c.text)), c.found)
        << "pattern " << c.pattern << ", text " << c.text;
  }
  testing::internal::GetCapturedStderr();
}

TEST(find, backwards_reads_pattern_and_anchors_towards_the_start) {
  find_case const reverse_cases[] = {
      {"ba", "abab", "0-2"},     {"^b", "ab\ncb", "0-1"},     {"^b", "ab\nc", "2-3"},
      {"a$", "a\nab", "1-2"},    {"\\>|$", "foo bar", "3-3"}, {"\\>|$", "bar", "3-3"},
      {"\\<r", "bar x", "2-3"},  {"\n\n", "a\n\n\nb", "1-3"}, {"(?<=b)a", "ab", "1-2"},
      {"a(?=b)", "ba", "0-1"},   {"\\Ab", "ab", "0-1"},       {"a\\z", "ab", "1-2"},
      {"\\w+", "ab cd ", "1-3"},
  };
  for (auto const& c : reverse_cases) {
    EXPECT_EQ(find_backwards(c.pattern, unicode::to_utf16(c.text)), c.found)
        << "pattern " << c.pattern << ", text " << c.text;
  }
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

TEST(find, match_tells_groups_and_text) {
  std::u16string const text = u"xab";
  auto const m = regex::find(text.begin(), text.end(), regex::nfa<char>("(a)()(c)?b"));
  ASSERT_TRUE(m);
  EXPECT_EQ(m.begin() - text.begin(), 1);
  EXPECT_FALSE(m.empty(1));
  EXPECT_TRUE(m.empty(2));
  EXPECT_TRUE(m.is_set(2));
  EXPECT_TRUE(m.empty(3));
  EXPECT_FALSE(m.is_set(3));
  EXPECT_EQ(m.begin(3), text.end());
  EXPECT_EQ(m.begin(99), text.end());
  EXPECT_EQ(m.text_begin(), text.begin());
  EXPECT_EQ(m.text_end(), text.end());
  EXPECT_FALSE(regex::match<char const*>());
}

std::string matches(char const* pattern, std::u16string const& text) {
  std::string result;
  regex::find_all(text.begin(), text.end(), regex::nfa<char>(pattern), [&](auto const& m) {
    result += (result.empty() ? "" : " ") + describe(m, text.begin());
  });
  return result;
}

TEST(find_all, steps_on_behind_empty_matches_and_sees_the_text_before) {
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
  testing::internal::CaptureStderr();
  EXPECT_EQ(find("\\((?R)?\\)", nested(63)), "0-126");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
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
  testing::internal::CaptureStderr();
  std::string const deep(100'000, '('), stars(100'000, '*');
  std::string alternatives = "x";
  for (int i = 0; i < 100'000; ++i) alternatives += "|y";
  EXPECT_EQ(find((deep + "a").c_str(), u"a"), "none");
  EXPECT_EQ(find(("a" + stars + "b").c_str(), u"aab"), "0-3");
  EXPECT_EQ(find((alternatives + "|z").c_str(), u"z"), "0-1");
  std::string looks, ends;
  for (int i = 0; i < 250; ++i) looks += i % 2 ? "(?<=" : "(?=", ends += ")";
  EXPECT_EQ(find((looks + ends + "a").c_str(), u"a"), "0-1");
  testing::internal::GetCapturedStderr();
}

}  // namespace
