#include "grammar/verify_rule.h"

#include <gtest/gtest.h>

#include "plist/text_reader.h"

namespace {

TEST(verify_rule, tells_the_first_fault) {
  char const* const table[][2] = {
      {"{match='a';}", ""},
      {"{begin='(a)';end='\\1)';}", "invalid regular expression for 'end'-key ("},
      {"{begin='(a)';end='\\1';repository={x={match='b';};};}", ""},
      {"(a)", "rule is not of proper type (expected key/value dictionaryKeys)"},
      {"{match='a';patterns=();}", "a match-rule cannot have sub-patterns"},
      {"{match='a';begin='a';end='a';}", "rule cannot have both begin and match key"},
      {"{begin='a';}", "begin/end-rule has no end-pattern"},
      {"{swallow='a';}", "swallow pattern can only be used with begin/end-rules"},
      {"{name=();match='(';}", "value for the 'name'-key must be a string"},
      {"{patterns=a;}", "value for the 'patterns'-key must be an array"},
      {"{repository=();}", "value for the 'repository'-key must be a key/value dictionary"},
      {"{patterns=({captures={1={match='(';};};});}", "invalid regular expression for 'match'-key"},
  };
  for (auto const& [rule, fault] : table) {
    auto const found = grammar::verify_rule(plist::convert(rule));
    EXPECT_EQ(found.value_or("").substr(0, std::string(fault).size()), fault) << rule;
    EXPECT_EQ(found.has_value(), *fault != '\0') << rule;
  }
}

}  // namespace
