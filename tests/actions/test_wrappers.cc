#include <gtest/gtest.h>

#include "actions/action_fixture.h"
#include "actions/movement.h"
#include "actions/movement_wrappers.h"
#include "text/marked_text.h"

TEST(wrappers, moving_with_a_selection) {
  expect_outcomes({
      {"moveLeft", "a[bc]d", "a|bcd"},
      {"moveRight", "a]bc[d", "abc|d"},
      {"moveWordLeft", "foo b[ar]", "foo |bar"},
      {"moveWordRight", "f]o[o bar", "foo| bar"},
      {"moveToEndOfLine", "a[bc]d", "abcd|"},
      {"moveLeft", "[abc]", "|abc"},
      // the caret's own steps: to the other side from an end, onward from inside
      {"moveBackward", "a[bc]d", "a|bcd"},
      {"moveForward", "a]bc[d", "abc|d"},
      {"moveBackward", "a[bcd|e]f", "abc|def"},
      {"moveForward", "a[b|cde]f", "abc|def"},
      {"moveForward", "ab|", "!ab|"},
      {"moveUp", "abc\nd[e]f", "ab|c\ndef"},
      {"moveUp", "abc\nde[f\ng]h", "ab|c\ndef\ngh"},
      {"moveDown", "ab[c\nd]ef\nghi", "abc\ndef\ng|hi"},
      {"moveDown", "a\n[bc\n]def\nghi", "a\nbc\n|def\nghi"},
      {"moveLeft", "a{bc\nd}", "a|bc\nd"},
  });
}

TEST(wrappers, extending) {
  expect_outcomes({
      {"moveRightAndModifySelection", "a|bc", "a[b]c"},
      {"moveLeftAndModifySelection", "ab|c", "a]b[c"},
      {"moveLeftAndModifySelection", "a[b]c", "a|bc"},
      {"moveRightAndModifySelection", "ab|", "!ab|"},
      {"moveDownAndModifySelection moveUpAndModifySelection", "a|b\ncd", "a|b\ncd"},
      {"moveToBeginningOfLineAndModifySelection", "ab[cd]e", "]ab[cde"},
      // a caret inside the selection goes to its end first
      {"moveRightAndModifySelection", "a[b|c]de", "a[bcd]e"},
      {"moveLeftAndModifySelection", "ab[c|d]e", "a]bcd[e"},
      {"moveRightAndModifySelection", "a]b|c[de", "a[bcd]e"},
      {"moveRightAndModifySelection", "a{b|c}d\n", "a{bcd}\n"},
      {"moveDownAndModifySelection", "a{b}c\ndef", "a{bc\nde}f"},
  });
}

TEST(wrappers, erasing) {
  expect_outcomes({
      {"deleteLeft", "ab|c", "a|c"},
      {"deleteRight", "a|bc", "a|c"},
      {"deleteLeft", "a[bc]d", "a|d"},
      {"deleteLeft", "|a", "!|a"},
      {"deleteUp", "abc\nd|ef", "a|ef"},
      {"deleteDown", "a|bc\ndef", "a|ef"},
      {"deleteLeft", "    |a", "|a", "s"},
      {"deleteToEndOfLine", "a|bc\nd", "a|\nd"},
      {"deleteWordRight", "{ab\nc}d", "|b\nd"},
  });
}

TEST(wrappers, extend_what_replacing_selected) {
  action_fixture fixture;
  marked_text::set(fixture.view, "ab[c|d]ef");
  std::u16string const text = u"1234";
  fixture.view.replace_selection(text.begin(), text.end());
  EXPECT_EQ(marked_text::get(fixture.view), "ab[1|234]ef");
  EXPECT_TRUE(select_forward_action(&fixture.view, right));
  EXPECT_EQ(marked_text::get(fixture.view), "ab[1234e]f");
}

TEST(wrappers, ask_to_keep_the_caret_in_sight) {
  action_fixture fixture;
  for (char const* action : {"moveLeft:", "moveRight:", "moveUp:", "moveDown:", "moveForward:",
                             "moveDownAndModifySelection:", "deleteRight:"}) {
    marked_text::set(fixture.view, "ab\nc|d\nef");
    fixture.view.scroll_caret_pending = false;
    EXPECT_TRUE(fixture.actions.perform_action(action, &fixture.view));
    EXPECT_TRUE(fixture.view.scroll_caret_pending) << action;
  }
}
