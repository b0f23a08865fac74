#include "actions/movement.h"

#include "actions/action_fixture.h"
#include "actions/movement_wrappers.h"
#include "actions/selecting.h"
#include "platform/user_defaults.h"
#include "test.h"
#include "text/marked_text.h"

using namespace actions;

// What actions do is in data/actions.txt; here is what no action shows.

TEST(movement, paragraphs) {
  struct {
    movement_function function;
    char const *before, *after, *modes = "";
  } const rows[] = {
      {to_beginning_of_paragraph, "a\n\nb\nc|d", "a\n\n|b\ncd"},
      {to_beginning_of_paragraph, "a\n\n|b", "a\n\n|b"},
      {to_beginning_of_paragraph, "\nb|", "|\nb"},
      {to_beginning_of_soft_paragraph, "a\n\n|\nb", "a\n\n|\nb"},
      {to_beginning_of_soft_paragraph, "a\nb|c", "a\n|bc", "w"},
      {to_beginning_of_soft_paragraph, "a\n|bc", "|a\nbc", "w"},
      {to_end_of_paragraph, "a|b\nc\n\nd", "ab\nc\n|\nd"},
      {to_end_of_paragraph, "a\n|\n\nd", "a\n\n|\nd"},
      {to_end_of_paragraph, "a|b\nc\n", "ab\nc\n|"},
      {to_end_of_soft_paragraph, "a|b\n\nd", "ab\n\n|d"},
      {to_end_of_soft_paragraph, "|ab\nc", "ab|\nc", "w"},
      {to_end_of_soft_paragraph, "ab|\nc", "ab\nc|", "w"},
      {to_end_of_soft_paragraph, "ab\nc|", "ab\nc|", "w"},
  };
  for (auto const& row : rows) {
    action_fixture fixture(row.modes);
    marked_text::set(fixture.view, row.before);
    fixture.view.selection.set_caret(row.function(fixture.view.selection.current_mark));
    EXPECT_EQ(marked_text::get(fixture.view), row.after) << row.before;
  }
  action_fixture fixture;
  marked_text::set(fixture.view, "a\n\nb\nc|d\n\ne");
  select_paragraph(&fixture.view);
  EXPECT_EQ(marked_text::get(fixture.view), "a\n\n[b\nc|d\n]\ne");
}

TEST(movement, user_defined_word_characters) {
  auto& defaults = platform::user_defaults::standard();
  auto const before = defaults.get("WynWordCharacters");
  defaults.set("WynWordCharacters", "-");
  action_fixture fixture;
  EXPECT_EQ(fixture.run("foo-bar|", "moveWordLeft"), "|foo-bar");
  EXPECT_EQ(fixture.run("|foo_bar", "moveWordRight"), "foo|_bar");
  EXPECT_EQ(fixture.run("foo-|bar", "selectWord"), "[foo-|bar]");
  EXPECT_EQ(fixture.run("x -|a\nx -a\nx  b", "moveToEndOfColumn"), "x -a\nx -|a\nx  b");
  defaults.set("WynWordCharacters", before);
}

TEST(movement, extends_what_replacing_selected) {
  action_fixture fixture;
  marked_text::set(fixture.view, "ab[c|d]ef");
  std::u16string const text = u"1234";
  fixture.view.replace_selection(text.begin(), text.end());
  EXPECT_EQ(marked_text::get(fixture.view), "ab[1|234]ef");
  EXPECT_TRUE(select_forward_action(&fixture.view, right));
  EXPECT_EQ(marked_text::get(fixture.view), "ab[1234e]f");
}

TEST(movement, asks_to_keep_the_caret_in_sight) {
  action_fixture fixture;
  for (char const* action : {"moveLeft", "moveUp", "moveForward", "moveToEndOfLine",
                             "moveDownAndModifySelection", "deleteRight"}) {
    fixture.view.scroll_caret_pending = false;
    fixture.run("ab\nc|d\nef", action);
    EXPECT_TRUE(fixture.view.scroll_caret_pending) << action;
  }
}
