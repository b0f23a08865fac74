#include "regex/nfa.h"

#include <gtest/gtest.h>

namespace {

std::string dump(char const* pattern) {
  return regex::dump(regex::nfa<char>(pattern).graph());
}

TEST(nfa, loops_over_single_units_need_no_counter) {
  EXPECT_EQ(dump("(?:a)*(b)"),
            "start -> 4\n"
            "0 final\n"
            "1 capture_end 1 -> 0\n"
            "2 literal 'b' -> 1\n"
            "3 capture_begin 1 -> 2\n"
            "4 repeat 0, single -> content 5 -> follow 2 -> 3\n"
            "5 literal 'a' -> 4\n");
  EXPECT_EQ(dump("(?:a|b){2,3}?"),
            "start -> 1\n"
            "0 final\n"
            "1 repeat 2,3 lazy counter 0 -> content 4 -> 0\n"
            "2 literal 'a' -> 1\n"
            "3 literal 'b' -> 1\n"
            "4 or -> other 3 -> 2\n");
}

struct first_case {
  char const* pattern;
  char const* can_begin;  // of "ab1 \n" and U+00E9, which stands as "e"
  regex::first_units::place place = regex::first_units::place::anywhere;
};

TEST(nfa, knows_where_a_match_can_begin) {
  using place = regex::first_units::place;
  first_case const cases[] = {
      {"ab", "a"},
      {"a|1", "a1"},
      {"a?b", "ab"},
      {"(a*)+b", "ab"},
      {"(?:(?:a?)+)+1", "a1"},
      {"(?:a{2})1", "a"},
      {"(?=b)a", "a"},
      {"(?>a?)1", "a1"},
      {"(?i:A)", "ae"},
      {".", "ab1 e"},
      {"(?s:.)", "ab1 \ne"},
      {"\\w", "ab1e"},
      {"\\W", " \n"},
      {"[\\d ]", "1 e"},
      {"[^\\w]", " \n"},
      {"[^\\w ]", "ab1\ne"},
      {"\\xe9", "e"},
      {"^a", "a", place::line_start},
      {"(\\A)(?:b)", "b", place::text_start},
      {"\\<a", "a"},
  };
  for (auto const& c : cases) {
    auto const first = regex::nfa<char>(c.pattern).graph().first_units;
    std::string can_begin;
    for (char16_t u : u"ab1 \n\u00e9") {
      if (u && first.contain(u)) can_begin += u == u'\u00e9' ? 'e' : static_cast<char>(u);
    }
    EXPECT_FALSE(first.may_be_empty) << c.pattern;
    EXPECT_EQ(can_begin, c.can_begin) << c.pattern;
    EXPECT_EQ(first.begins_at, c.place) << c.pattern;
  }
  for (char const* empty :
       {"", "a*", "a|", "(?=a)", "(a?)+", "$", "(a)?\\1", "(?(1)a:)", "(?>a*)"}) {
    EXPECT_TRUE(regex::nfa<char>(empty).graph().first_units.may_be_empty) << empty;
  }
}

}  // namespace
