#include "actions/action_map.h"

#include "actions/action_fixture.h"
#include "actions/action_helpers.h"
#include "actions/selecting.h"
#include "regex/traits.h"
#include "test.h"
#include "text/marked_text.h"

using namespace actions;

namespace {

text::char_t upper(text::char_t u) {
  return regex::traits<text::char_t>::to_upper(u);
}

void type_x(text::view* view) {
  std::u16string const x = u"x";
  view->replace_selection(x.begin(), x.end());
}

}  // namespace

TEST(action_map, first_registration_wins) {
  text::storage storage;
  text::view view(storage);
  action_map map;
  map.add_action([](text::view*) { return false; }, "a:");
  map.add_action([](text::view*) { return true; }, "a:");
  map.add_action([](text::view*) { return 0; }, "number:");
  EXPECT_FALSE(map.perform_action("a:", &view));
  EXPECT_TRUE(map.perform_action("number:", &view));  // only a bool tells of failure
  EXPECT_FALSE(map.perform_action("unknown:", &view));
  EXPECT_FALSE(map.has_action("unknown:"));

  title_action_map titles;
  titles.add_action([](text::view*) { return std::string("one"); }, "t");
  titles.add_action([](text::view*) { return std::string("two"); }, "t");
  EXPECT_EQ(titles.perform_action("t", &view), "one");
  EXPECT_EQ(titles.perform_action("unknown", &view), "");
}

TEST(action_map, leaves_out_what_the_text_view_does_itself) {
  action_fixture fixture;
  for (auto const* name : {"deleteUp:", "deleteToBeginningOfParagraph:", "deleteSubWordForward:"})
    EXPECT_TRUE(fixture.actions.has_action(name)) << name;
  for (auto const* name : {"deleteBackward:", "deleteForward:", "deleteToEndOfParagraph:"})
    EXPECT_FALSE(fixture.actions.has_action(name)) << name;
}

TEST(helpers, sequence_gives_the_second_result) {
  action_fixture fixture;
  std::string order;
  sequence_helper const both([&](text::view*) { order += "1"; },
                             [&](text::view*) { return order += "2", false; });
  EXPECT_FALSE(both(&fixture.view));
  EXPECT_EQ(order, "12");
}

TEST(helpers, selecting_when_nothing_is_selected) {
  action_fixture fixture;
  bind_view_transform_helper const uppercase(upper);
  cond_select_line_helper const on_word(uppercase, select_word);
  auto const run = [&](char const* before) {
    marked_text::set(fixture.view, before);
    on_word(&fixture.view);
    return marked_text::get(fixture.view);
  };
  EXPECT_EQ(run("a fo|o b"), "a FO|O b");
  EXPECT_EQ(run("a f[o]o b"), "a f[O]o b");
  EXPECT_EQ(run("a f]oo b[ar"), "a f]OO B[ar");
  EXPECT_EQ(run("{ab\nc}d"), "{Ab\nC}d");
  EXPECT_EQ(run("|"), "|");

  marked_text::set(fixture.view, "f|oo");
  cond_select_line_helper const failing([](text::view*) { return false; }, select_word);
  EXPECT_FALSE(failing(&fixture.view));
  EXPECT_EQ(marked_text::get(fixture.view), "f|oo");

  cond_select_line_helper const throwing(
      [](text::view* view) {
        type_x(view);
        throw std::runtime_error("no memory");
      },
      select_word);
  EXPECT_THROW(throwing(&fixture.view), std::runtime_error);
  EXPECT_EQ(marked_text::get(fixture.view), "x|");
}

TEST(helpers, options_and_their_titles) {
  action_fixture fixture;
  auto const title = [&] {
    return fixture.titles.perform_action("toggleColumnSelectionMenuTitle", &fixture.view);
  };
  EXPECT_EQ(title(), "Change to Column Selection");
  EXPECT_EQ(fixture.run("a[b\nc]d", "toggleColumnSelection"), "a{b\nc}d");
  EXPECT_EQ(title(), "Change to Stream Selection");
  EXPECT_EQ(fixture.run("a{b\nc}d", "toggleColumnSelection"), "a[b\nc]d");
}
