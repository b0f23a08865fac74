#include "regex/nfa.h"

#include "data_rows.h"

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

TEST(nfa, knows_where_a_match_can_begin) {
  char const* const places[] = {"anywhere", "line_start", "text_start"};
  for (auto const& c : data_rows("own_patterns.txt", "beginnings")) {
    auto const first = regex::nfa<char>(c[0].c_str()).graph().first_units;
    std::string can_begin;
    for (char16_t u : u"ab1 \n\u00e9") {
      if (u && first.contain(u)) can_begin += u == u'\u00e9' ? 'e' : static_cast<char>(u);
    }
    EXPECT_FALSE(first.may_be_empty) << c[0];
    EXPECT_EQ(can_begin, c[1]) << c[0];
    EXPECT_EQ(places[static_cast<size_t>(first.begins_at)], c[2]) << c[0];
  }
  for (char const* empty :
       {"", "a*", "a|", "(?=a)", "(a?)+", "$", "(a)?\\1", "(?(1)a:)", "(?>a*)"}) {
    EXPECT_TRUE(regex::nfa<char>(empty).graph().first_units.may_be_empty) << empty;
  }
}

}  // namespace
