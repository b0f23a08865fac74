#include "platform/accessible_text.h"

#include <random>

#include "platform/utf.h"
#include "textview/shown_view.h"

// The text of a view as assistive programs read, follow and edit it.
namespace {

using platform::unit_range;

/// Follows the text by what it hears alone.
class follower final : public platform::accessible_text_observer {
 public:
  void text_inserted(std::size_t at, std::u16string const& text) override {
    ++events;
    ASSERT_LE(at, heard.size());
    heard.insert(at, text);
  }
  void text_erased(std::size_t at, std::u16string const& text) override {
    ++events;
    ASSERT_EQ(heard.substr(at, text.size()), text);
    heard.erase(at, text.size());
  }
  void caret_moved() override { ++moves; }

  std::u16string heard;
  int events = 0, moves = 0;
};

class access : public shown_view_test, public shown_view {
 protected:
  platform::accessible_text& text_of() { return *view.begin_access(follower_); }
  std::u16string whole() { return text_of().text({0, text_of().length()}); }
  std::u16string at(unit_range range) { return text_of().text(range); }

  follower follower_;
};

TEST_F(access, events_tell_each_change_and_offsets_are_those_of_the_text) {
  set("one\n\ttwo\n\nthr|ee four\nfive");
  follower_.heard = whole();
  std::mt19937 random(14);
  SCOPED_TRACE("seed 14");
  for (char const* undone : {"undo:", "redo:", "undo:"}) {
    for (int step = 0; step < 150; ++step) {
      auto const some = [&](std::size_t n) { return random() % (n + 1); };
      std::size_t const size = whole().size(), from = some(size), to = some(size);
      switch (random() % 6) {
        case 0:
          text_of().select(from, to);
          perform("insertText:", step % 3 == 0 ? "x\ny" : "z");
          break;
        case 1:
          text_of().replace({std::min(from, to), std::max(from, to)}, u"ab\ncd\n");
          break;
        case 2:
          text_of().select(from, from);
          perform("deleteBackward:");
          break;
        case 3:
          text_of().select(from, to);
          perform("toggleColumnSelection:");
          perform("insertText:", "c");
          break;
        case 4:
          perform("insertNewline:");
          break;
        default:
          perform(undone);
      }
      std::u16string const now = whole();
      ASSERT_EQ(follower_.heard, now) << step;
      ASSERT_EQ(unicode::to_utf8(now), text());
      text_of().select(from, std::min(to, now.size()));
      EXPECT_EQ(text_of().caret(), std::min(to, now.size()));
    }
  }
}

TEST_F(access, nothing_is_heard_when_nobody_listens_any_more) {
  set("a|");
  follower_.heard = whole();
  view.end_access();
  perform("insertText:", "b");
  EXPECT_EQ(follower_.events + follower_.moves, 0);
  EXPECT_EQ(whole(), u"ab");
  perform("moveLeft:");
  EXPECT_EQ(follower_.moves, 1);
}

TEST_F(access, a_change_of_many_places_or_of_a_long_text_is_told_in_part) {
  std::string lines = "[";
  for (int n = 0; n < 1000; ++n) lines += "\nxxx";
  set(lines + "]|");
  follower_.heard = whole();
  perform("toggleColumnSelection:");
  perform("moveToEndOfLineAndModifySelection:");
  perform("insertText:", "c");
  EXPECT_LE(follower_.events, 64);
  follower_.heard = whole();
  text_of().replace({0, text_of().length()}, std::u16string(1 << 18, u'x'));
  EXPECT_LE(follower_.heard.size(), 1U << 17);
}

TEST_F(access, characters_rows_and_lines) {
  view.setRightMargin(8);
  view.setSoftWrap(true);
  set("aaaa bbbb cccc\n\ne\u0301x\n\U0001F600|");
  struct {
    std::size_t offset;
    std::u16string character, row, line;
  } const table[] = {
      {0, u"a", u"aaaa ", u"aaaa bbbb cccc\n"},
      {6, u"b", u"bbbb ", u"aaaa bbbb cccc\n"},
      {14, u"\n", u"cccc\n", u"aaaa bbbb cccc\n"},
      {15, u"\n", u"\n", u"\n"},
      {17, u"e\u0301", u"e\u0301x\n", u"e\u0301x\n"},
      {21, u"\U0001F600", u"\U0001F600", u"\U0001F600"},
      {22, u"", u"\U0001F600", u"\U0001F600"},
      {999, u"", u"\U0001F600", u"\U0001F600"},
  };
  for (auto const& [offset, character, row, line] : table) {
    EXPECT_EQ(at(text_of().character_at(offset)), character) << offset;
    EXPECT_EQ(at(text_of().row_at(offset)), row) << offset;
    EXPECT_EQ(at(text_of().line_at(offset)), line) << offset;
  }
  for (std::size_t offset = 0; offset < text_of().length();
       offset = text_of().character_at(offset).last) {
    platform::rect const r = text_of().rect_of(offset);
    EXPECT_EQ(text_of().offset_at({r.x + 1, r.y + r.height / 2}), offset);
  }
}

TEST_F(access, folded_text_is_read_and_has_no_place) {
  set("[a {\n  b\n}]|\nc");
  perform("foldSelection:");
  ASSERT_EQ(view.view()->lines(), 3U);
  EXPECT_EQ(at(text_of().row_at(6)), u"  b\n");
  EXPECT_TRUE(text_of().rect_of(6).empty());
  text_of().select(6, 6);
  EXPECT_EQ(view.view()->lines(), 4U);
}

TEST_F(access, each_row_of_a_rectangle_is_a_selection) {
  set("abcd\nabcd\nabcd|");
  text_of().select(1, 13);
  perform("toggleColumnSelection:");
  ASSERT_EQ(text_of().selection_count(), 3U);
  for (std::size_t n = 0; n < 3; ++n)
    EXPECT_EQ(text_of().selection(n), (unit_range{5 * n + 1, 5 * n + 3})) << n;
  EXPECT_EQ(text_of().selection(3), unit_range());
}

TEST_F(access, another_document_is_another_text) {
  set("one|");
  text_of();
  view.setDocument(WynDocument::document());
  EXPECT_EQ(whole(), u"");
  perform("insertText:", "two");
  EXPECT_EQ(follower_.heard, u"two");
  view.setDocument(nullptr);
  EXPECT_EQ(view.begin_access(follower_), nullptr);
}

}  // namespace
