#include "grammar/possible_scopes.h"

#include "plist/text_reader.h"
#include "test.h"

namespace {

TEST(possible_scopes, are_all_that_a_selector_may_meet) {
  std::vector<grammar::catalogue::entry> entries;
  auto const add = [&](char const* name, char const* text) {
    entries.push_back({name, name, name, [text] { return plist::convert(text); }});
  };
  add("text.a",
      "{scopeName='text.a';patterns=({name='link';match='(x)';captures={1={name='mark';};};}"
      ",{include='#in';},{include='source.b';});"
      "repository={in={begin='a';end='b';contentName='inner.content';};};}");
  add("source.b", "{scopeName='source.b';patterns=({include='$self';},{include='text.a';});}");
  add("source.c", "{scopeName='source.c';}");
  grammar::catalogue const all_rules(std::move(entries));
  auto const scopes = grammar::possible_scopes(all_rules, 0);
  EXPECT_EQ(scopes, (std::set<std::string>{"text.a", "link", "mark", "inner.content", "source.b"}));
  EXPECT_TRUE(grammar::possible_scopes(all_rules, grammar::catalogue::none).empty());

  for (char const* selector : {"", "text", "text link", "source.b mark", "nowhere, inner",
                               "text - link", "text & source", "link text", "- nowhere"})
    EXPECT_TRUE(scope::may_apply(selector, scopes)) << selector;
  for (char const* selector : {"source.c", "text.a.b", "text nowhere", "text & nowhere",
                               "nowhere - text", "(source.c | x) text", "(text"})
    EXPECT_FALSE(scope::may_apply(selector, scopes)) << selector;
}

}  // namespace
