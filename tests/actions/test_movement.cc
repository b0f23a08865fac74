#include "actions/movement.h"

#include <gtest/gtest.h>

#include "actions/action_fixture.h"
#include "actions/word_units.h"
#include "platform/user_defaults.h"
#include "text/marked_text.h"

TEST(movement, characters) {
  expect_outcomes({
      {"moveLeft", "ab|c", "a|bc"},
      {"moveLeft", "|abc", "!|abc"},
      {"moveLeft", "a\n|b", "a|\nb"},
      {"moveRight", "a|\nb", "a\n|b"},
      {"moveRight", "abc|", "!abc|"},
      {"moveLeft", "a\t|b", "a|\tb"},
      {"moveLeft", "a··|", "a|"},
      {"moveLeft", "\t··|b", "\t|b"},  // stands in front of the b, as the marks count behind it
  });
}

TEST(movement, characters_in_virtual_columns) {
  expect_outcomes({
      {"moveRight", "ab|", "ab·|", "f"},
      {"moveRight moveRight", "ab|\ncd", "ab··|\ncd", "f"},
      {"moveLeft", "ab··|\ncd", "ab·|\ncd", "f"},
      {"moveLeft", "ab\n|cd", "ab|\ncd", "f"},
      {"moveRight", "a|\tb", "a·|\tb", "f"},
      {"moveRight moveRight moveRight", "a|\tb", "a\t|b", "f"},
      {"moveRight", "abc|\tb", "abc\t|b", "f"},
      {"moveLeft", "a\t|b", "a··|\tb", "f"},
      {"moveLeft moveLeft moveLeft", "a\t|b", "a|\tb", "f"},
      {"moveLeft", "|a", "!|a", "f"},
      {"moveLeft", "·|\ta", "|\ta", "f"},
      {"moveRightAndModifySelection", "a{b}\n\nc", "a{b·}\n\nc"},
      {"moveDownAndModifySelection", "a{bc}\n\nc", "a{bc\n···}\nc"},
      {"moveLeftAndModifySelection", "{ab·}", "{ab}"},
  });
}

TEST(movement, soft_tabs) {
  expect_outcomes({
      {"moveRight", "|    a", "    |a", "s"},
      {"moveLeft", "    |a", "|    a", "s"},
      {"moveRight moveRight", "|        a", "        |a", "s"},
      {"moveRight", " |   a", "    |a", "s"},
      {"moveRight", "a|   b", "a   |b", "s"},
      {"moveRight", "a|  b", "a | b", "s"},
      {"moveLeft", "a   |b", "a|   b", "s"},
      {"moveLeft", "      |a", "     | a", "s"},
      {"moveLeft", "abcd|", "abc|d", "s"},
      {"moveRight", "|  ", " | ", "s"},
      {"moveRight", "|   \nb", " |  \nb", "s"},
      {"moveRight", "a|", "!a|", "s"},
      {"moveLeft", "a\n|    b", "a|\n    b", "s"},
      {"moveLeft", "\t    |b", "\t|    b", "s"},
      {"moveRight", "|    a", " |   a", "f"},
  });
}

TEST(movement, rows) {
  expect_outcomes({
      {"moveUp", "ab\nc|d", "a|b\ncd"},
      {"moveUp", "ab|c", "|abc"},
      {"moveUp", "|abc", "!|abc"},
      {"moveDown", "ab|c", "abc|"},
      {"moveDown", "abc|", "!abc|"},
      {"moveDown moveDown", "abc|\n\ndefg", "abc\n\ndef|g"},
      {"moveUp moveDown moveDown", "abc\nde|f", "abc\ndef|"},
      {"moveUp moveDown", "abc\nde|f\nghi", "abc\nde|f\nghi"},
      {"moveUp moveUp moveDown", "abc\nde|f\nghi", "abc\nde|f\nghi"},
      {"moveDown", "abcd|e\na\tb", "abcde\na\t|b"},
      {"moveDown", "ab|c\na\tb", "abc\na|\tb"},
      {"moveDown", "ab|c\na\tb", "abc\na·|\tb", "f"},
      {"moveDown", "abc|\n", "abc\n···|", "f"},
      {"moveDown moveLeft moveDown", "abcd|\nab\nabcd", "abcd\nab\na|bcd"},
      {"moveToBeginningOfLine", "a\nbc|d", "a\n|bcd"},
      {"moveToBeginningOfLine", "|a", "|a"},
      {"moveToEndOfLine", "a|b\nc", "ab|\nc"},
      {"moveToBeginningOfDocument", "a\nbc|d", "|a\nbcd"},
      {"moveToEndOfDocument", "a|\nbcd\n", "a\nbcd\n|"},
  });
}

TEST(movement, wrapped_rows) {
  expect_outcomes({
      {"moveRight", "aaaa| bbbb", "aaaa |bbbb", "w"},
      {"moveLeft", "aaaa |bbbb", "aaaa| bbbb", "w"},
      {"moveDown", "aa|aa bbbb", "aaaa bb|bb", "w"},
      {"moveUp", "aaaa bb|bb", "aa|aa bbbb", "w"},
      {"moveDown moveDown", "x\naaa|a b\ncccc", "x\naaaa b\nccc|c", "w"},
      {"moveToBeginningOfLine", "aaaa bb|bb", "aaaa |bbbb", "w"},
      {"moveToEndOfLine", "a|aaa bbbb", "aaaa| bbbb", "w"},
      {"moveToBeginningOfParagraph", "aaaa bb|bb", "|aaaa bbbb", "w"},
      {"moveWordLeft", "aaaa |bbbb", "|aaaa bbbb", "w"},
      {"moveWordRight", "aaaa| bbbb", "aaaa bbbb|", "w"},
      {"deleteToEndOfLine", "a|aaa bbbb", "a| bbbb", "w"},
  });
}

TEST(movement, words) {
  expect_outcomes({
      {"moveWordLeft", "foo  bar|", "foo  |bar"},
      {"moveWordLeft moveWordLeft", "foo  bar|", "foo|  bar"},
      {"moveWordLeft", "foo |bar", "|foo bar"},
      {"moveWordLeft", "foo  |bar", "foo|  bar"},
      {"moveWordLeft", "foo-|bar", "|foo-bar"},
      {"moveWordLeft", "f|oo", "|foo"},
      {"moveWordLeft", "|foo", "!|foo"},
      {"moveWordLeft", "foo\n|bar", "|foo\nbar"},
      {"moveWordLeft", "foo \n|bar", "foo| \nbar"},
      {"moveWordLeft", "foo\n\n|bar", "foo\n|\nbar"},
      {"moveWordLeft", " |x", "| x"},
      {"moveWordLeft", "foo··|", "|foo", "f"},
      {"moveWordRight", "|foo bar", "foo| bar"},
      {"moveWordRight", "foo| bar", "foo bar|"},
      {"moveWordRight", "foo|  bar", "foo  |bar"},
      {"moveWordRight", "foo|  \nbar", "foo  |\nbar"},
      {"moveWordRight", "foo|\nbar baz", "foo\nbar| baz"},
      {"moveWordRight", "foo|\n\nbar", "foo\n|\nbar"},
      {"moveWordRight", "foo|", "!foo|"},
      {"moveWordRight", "foo| ", "foo |"},
      {"moveWordRight", "a_1|2é b", "a_12é| b"},
      {"moveWordRight", "foo··|\nbar", "foo\nbar|", "f"},
      {"deleteWordLeft", "foo bar|", "foo |"},
      {"deleteWordForward", "|foo bar", "| bar"},
      {"deleteWordBackward", "|foo", "!|foo"},
      {"moveWordForwardAndModifySelection", "f|oo bar", "f[oo] bar"},
      {"moveWordBackwardAndModifySelection", "foo ba|r", "foo ]ba[r"},
  });
}

TEST(movement, sub_words) {
  expect_outcomes({
      {"moveSubWordLeft", "fooBarBAZ|", "fooBar|BAZ"},
      {"moveSubWordLeft moveSubWordLeft", "fooBarBAZ|", "foo|BarBAZ"},
      {"moveSubWordLeft moveSubWordLeft moveSubWordLeft", "fooBarBAZ|", "|fooBarBAZ"},
      {"moveSubWordLeft", "foo_bar|", "foo_|bar"},
      {"moveSubWordLeft", "foo_|bar", "|foo_bar"},
      {"moveSubWordLeft", "foo__|bar", "foo|__bar"},
      {"moveSubWordLeft", "x12|", "x1|2"},
      {"moveSubWordLeft", "a  |b", "a|  b"},
      {"moveSubWordLeft", "foo\n|bar", "|foo\nbar"},
      {"moveSubWordLeft", "\n|bar", "|\nbar"},
      {"moveSubWordLeft", "|a", "!|a"},
      {"moveSubWordRight", "|fooBarBAZ", "foo|BarBAZ"},
      {"moveSubWordRight", "foo|BarBAZ", "fooBar|BAZ"},
      {"moveSubWordRight", "|HTMLParser", "HTML|Parser"},
      {"moveSubWordRight", "|HTML x", "HTML| x"},
      {"moveSubWordRight", "|foo_bar", "foo|_bar"},
      {"moveSubWordRight", "foo|_bar ", "foo_bar| "},
      {"moveSubWordRight", "foo|__bar", "foo__|bar"},
      {"moveSubWordRight", "foo|  bar", "foo  |bar"},
      {"moveSubWordRight", "|A_b", "A|_b"},
      {"moveSubWordRight", "|A1b", "A|1b"},
      {"moveSubWordRight", "|123", "1|23"},
      {"moveSubWordRight", "foo|\nbar x", "foo\nbar| x"},
      {"moveSubWordRight", "fo|o", "foo|"},
      {"moveSubWordRight", "foo|", "!foo|"},
      {"moveSubWordRight", "|éÉé", "é|Éé"},
      {"deleteSubWordLeft", "fooBar|", "foo|"},
      {"deleteSubWordForward", "|fooBar", "|Bar"},
  });
}

TEST(movement, every_step_but_at_the_end_leads_on) {
  std::string const text = "A1b_C__dE9 \n\n  \tx.Y1\u00e9-\u0416\u0436\nHTMLParser2Go";
  for (auto f : {right, word_right, sub_word_right, left, word_left, sub_word_left}) {
    action_fixture fixture;
    marked_text::set(fixture.view, text);
    bool const forward = f == right || f == word_right || f == sub_word_right;
    auto const start = fixture.view.begin(0), end = fixture.view.end();
    auto it = forward ? start : end;
    for (int n = 0; it != (forward ? end : start); ++n) {
      auto const next = f(it);
      ASSERT_TRUE(forward ? it < next : next < it) << it.base.line << ":" << it.base.column;
      it = next;
    }
    EXPECT_EQ(f(it), it);
  }
}

TEST(movement, user_defined_word_characters) {
  auto& defaults = platform::user_defaults::standard();
  auto const before = defaults.get("WynWordCharacters");
  defaults.set("WynWordCharacters", "-");
  expect_outcomes({
      {"moveWordLeft", "foo-bar|", "|foo-bar"},
      {"moveWordRight", "|foo_bar", "foo|_bar"},
      {"selectWord", "foo-|bar", "[foo-|bar]"},
      {"moveToEndOfColumn", "x -|a\nx -a\nx  b", "x -a\nx -|a\nx  b"},
  });
  defaults.set("WynWordCharacters", before);
}

TEST(movement, columns) {
  expect_outcomes({
      {"moveToEndOfColumn", "a |x\nb y\nc z", "a x\nb y\nc |z"},
      {"moveToEndOfColumn", "a |x\nb y\n  \nc z", "a x\nb |y\n  \nc z"},
      {"moveToEndOfColumn", "a |x\nbyy\n  \nc z\nd w", "a x\nbyy\n  \nc |z\nd w"},
      {"moveToEndOfColumn", "a |x\nbyy\n  ", "a x\nbyy\n  |"},
      {"moveToEndOfColumn", "a |x", "a |x"},
      {"moveToBeginningOfColumn", "a x\nb y\nc |z", "a |x\nb y\nc z"},
      {"moveToBeginningOfColumn", "xxx\nb y\nc |z", "xxx\nb |y\nc z"},
      {"moveToBeginningOfColumn", "a b\nxxx\nc |z", "a |b\nxxx\nc z"},
      {"moveToBeginningOfColumn", "x\nxxx\nc |z", "x·|\nxxx\nc z"},
      // the word begins before the caret, which keeps its own column
      {"moveToEndOfColumn", "foo|\nbar\nb", "foo\nbar\nb··|"},
      {"moveToEndOfColumn", "foo  |\nbar\n x\n", "foo  \nbar··|\n x\n"},
      {"moveToBeginningOfColumn", "\n\tab\n    c|d\n", "\n\ta|b\n    cd\n"},
      {"moveToEndOfColumn", "|a\nb\n c", "a\n|b\n c"},
      {"moveToEndOfColumnAndModifySelection", "a |x\nb y", "a [x\nb ]y"},
      {"deleteToEndOfColumn", "a |x\nb y", "a |y"},
  });
}

TEST(movement, paragraphs) {
  expect_outcomes({
      {"moveToBeginningOfParagraph", "a\nbc|d", "a\n|bcd"},
      {"moveToEndOfParagraph", "a\nb|cd\n", "a\nbcd|\n"},
      {"deleteToBeginningOfParagraph", "a\nbc|d", "a\n|d"},
      {"deleteToBeginningOfParagraph", "a\n|d", "a\n|d"},
  });

  struct {
    movement_function function;
    char const *before, *after, *modes;
  } const rows[] = {
      {to_beginning_of_paragraph, "a\n\nb\nc|d", "a\n\n|b\ncd", ""},
      {to_beginning_of_paragraph, "a\n\n|b", "a\n\n|b", ""},
      {to_beginning_of_paragraph, "\nb|", "|\nb", ""},
      {to_beginning_of_paragraph, "a\n\n|\nb", "a\n\n|\nb", ""},
      {to_end_of_paragraph, "a|b\nc\n\nd", "ab\nc\n|\nd", ""},
      {to_end_of_paragraph, "a|b\nc\n", "ab\nc\n|", ""},
      {to_end_of_paragraph, "|a\n\n", "a\n|\n", ""},
      {to_end_of_paragraph, "a\n|\n\nd", "a\n\n|\nd", ""},
      {to_beginning_of_soft_paragraph, "a\n\nb\nc|d", "a\n\n|b\ncd", ""},
      {to_end_of_soft_paragraph, "a|b\n\nd", "ab\n\n|d", ""},
      {to_end_of_soft_paragraph, "a|b\nd", "ab\nd|", ""},
      {to_beginning_of_soft_paragraph, "a\nb|c", "a\n|bc", "w"},
      {to_beginning_of_soft_paragraph, "a\n|bc", "|a\nbc", "w"},
      {to_beginning_of_soft_paragraph, "|bc", "|bc", "w"},
      {to_end_of_soft_paragraph, "|ab\nc", "ab|\nc", "w"},
      {to_end_of_soft_paragraph, "ab|\nc", "ab\nc|", "w"},
      {to_end_of_soft_paragraph, "ab\nc|", "ab\nc|", "w"},
  };
  for (auto const& row : rows) {
    action_fixture fixture;
    apply_modes(fixture.view, row.modes);
    marked_text::set(fixture.view, row.before);
    fixture.view.selection.set_caret(row.function(fixture.view.selection.current_mark));
    EXPECT_EQ(marked_text::get(fixture.view), row.after) << row.before;
  }
}
