#include <gtest/gtest.h>

#include "actions/action_fixture.h"
#include "actions/selecting.h"
#include "regex/find.h"
#include "text/marked_text.h"
#include "text/random_text.h"

TEST(selecting, words) {
  expect_outcomes({
      {"selectWord", "a f|oo b", "a [f|oo] b"},
      {"selectWord", "a |foo b", "a [|foo] b"},
      {"selectWord", "a foo| b", "a [foo] b"},
      {"selectWord", "a - |- b", "a[ - |- ]b"},
      {"selectWord", "a  |\nb", "a[  ]\nb"},
      {"selectWord", "a\n|\nb", "a\n|\nb"},
      {"selectWord", "|  a", "[|  ]a"},
      {"selectWord", "|", "|"},
      {"selectWord", "f[oo b]ar", "[foo b|ar]"},
      {"selectWord", "f]oo b[ar", "[f|oo bar]"},
      {"selectWord", "foo[ ]bar", "[foo |bar]"},
      {"selectWord", " [-] ", " [-] "},
      {"selectWord", "{foo\nb}ar", "[foo\nb|ar]"},
      {"selectWord", "é|é_1-", "[é|é_1]-"},
  });
}

TEST(selecting, lines) {
  expect_outcomes({
      {"selectHardLine", "a\nb|c\nd", "a\n[b|c\n]d"},
      {"selectHardLine", "a\nb|c", "a\n[b|c]"},
      {"selectHardLine", "|", "|"},
      {"selectHardLine", "a[b\n]c", "[ab\n]c"},
      {"selectHardLine", "a[b\nc]d\ne", "[ab\nc|d\n]e"},
      {"selectHardLine", "|ab\nc", "[|ab\n]c"},
      {"selectLine", "a\nb|c\nd", "a\n[b|c\n]d"},
      {"selectLine", "a\nb|c", "a\n[b|c]"},
      {"selectLine", "a[b\n]c", "[ab\n]c"},
      {"selectLine", "a[b\nc]d\ne", "[ab\nc|d\n]e"},
      {"selectLine", "a\n|c\n", "a\n[|c\n]"},
      {"selectLine", "aaaa b|bbb cc", "aaaa [b|bbb ]cc", "w"},
      {"selectLine", "aaaa [bbbb ]cc", "aaaa [bbbb ]cc", "w"},
      {"selectLine", "aa[aa b]bbb cc", "[aaaa b|bbb ]cc", "w"},
      {"selectHardLine", "x\naaaa b|bbb\ny", "x\n[aaaa b|bbb\n]y", "w"},
      {"selectAll", "a\nb|c\n", "[a\nb|c\n]"},
  });
}

TEST(selecting, paragraphs) {
  expect_outcomes({
      {"selectParagraph", "a\n\nb\nc|d\n\ne", "a\n\n[b\nc|d\n\n]e"},
      {"selectParagraph", "a\n\nb|", "a\n\n[b]"},
      {"selectParagraph", "a\n\n|b\nc\n", "a\n\n[|b\nc\n]"},
      {"selectParagraph", "a[b\n\nc]d\n\ne", "[ab\n\nc|d\n\n]e"},
      {"selectParagraph", "a\nb|c\nd", "a\n[b|c]\nd", "w"},
      {"selectParagraph", "a\n|\nd", "a\n|\nd", "w"},
  });
  action_fixture fixture;
  marked_text::set(fixture.view, "a\n\nb\nc|d\n\ne");
  select_paragraph(&fixture.view);
  EXPECT_EQ(marked_text::get(fixture.view), "a\n\n[b\nc|d\n]\ne");
}

// What ends a word is the pattern `\>` or the end of the line.
TEST(selecting, word_ends_where_the_pattern_says) {
  regex::nfa<text::char_t> const word_end(u"\\>|$");
  for (unsigned seed = 0; seed < 300; ++seed) {
    random_source random(seed);
    action_fixture fixture;
    auto const line = random.text(1 + random.below(12), u"ab_9 -.\u00e9\u2014");
    fixture.storage.insert(fixture.storage.end(-1), line.begin(), line.end());
    text::iterator const from(0, random.below(line.size()), &fixture.storage);
    fixture.view.selection.set_caret({&fixture.view, from});
    select_word(&fixture.view);
    auto const match = regex::find(from, fixture.storage.end(0), word_end);
    if (!regex::traits<text::char_t>::is_word(*from)) continue;
    EXPECT_EQ(fixture.view.selection.last().base.column, match.begin().column)
        << marked_text::get(fixture.view);
  }
}
