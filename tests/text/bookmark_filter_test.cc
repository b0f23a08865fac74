#include "text/views/bookmark_filter.h"

#include "marked_text.h"
#include "random_text.h"
#include "test.h"

namespace {

using text::pos;

class bookmarks : public testing::Test {
 protected:
  /// A star in `text` is a bookmark after it.
  void set(std::string const& text) {
    storage.clear();
    view.bookmark_filter->marks.clear();
    std::u16string plain;
    std::vector<pos> marks;
    pos at;
    for (char16_t const unit : marked_text::units(text)) {
      if (unit == u'*') {
        marks.push_back(at);
        continue;
      }
      plain += unit;
      at = unit == u'\n' ? pos(at.line + 1, 0) : pos(at.line, at.column + 1);
    }
    storage.insert(storage.end(-1), plain.begin(), plain.end());
    for (pos const mark : marks) view.set_bookmark(mark, true);
  }
  std::string get() {
    std::u16string result;
    for (size_t line = 0; line < storage.lines(); ++line) {
      std::u16string units(storage.line_units(line));
      if (auto const mark = view.bookmark_filter->marks.find(line))
        units.insert(mark->column, u"*");
      result += (line == 0 ? u"" : u"\n") + units;
    }
    return marked_text::utf8(result);
  }

  text::storage storage;
  text::view view{storage};
};

TEST_F(bookmarks, one_a_line) {
  set("ab*cd\nxy");
  view.set_bookmark({0, 4}, true);
  EXPECT_EQ(get(), "ab*cd\nxy");
  view.toggle_bookmark({1, 1});
  view.toggle_bookmark({0, 4});
  EXPECT_EQ(get(), "abcd\nx*y");
  view.set_bookmark({0, 0}, false);
  EXPECT_FALSE(view.has_bookmark(0));
}

TEST_F(bookmarks, next_and_previous_go_round) {
  EXPECT_EQ(view.next_bookmark(7), pos(7, 0));
  EXPECT_EQ(view.previous_bookmark(7), pos(7, 0));
  set("a\nb*\nc\n*d\ne");
  EXPECT_EQ(view.next_bookmark(0), pos(1, 1));
  EXPECT_EQ(view.next_bookmark(1), pos(3, 0));
  EXPECT_EQ(view.next_bookmark(3), pos(1, 1));
  EXPECT_EQ(view.previous_bookmark(4), pos(3, 0));
  EXPECT_EQ(view.previous_bookmark(3), pos(1, 1));
  EXPECT_EQ(view.previous_bookmark(1), pos(3, 0));
  view.set_bookmark({3, 0}, false);
  EXPECT_EQ(view.next_bookmark(1), pos(1, 1));
  EXPECT_EQ(view.previous_bookmark(1), pos(1, 1));
}

/// Each bookmark is a position that is moved by itself, unit by unit of the change.
class naive_bookmarks {
 public:
  void insert(text::storage const& storage, text::iterator at, std::u16string const& units) {
    size_t const offset = offset_of(storage, at.pos());
    for (size_t& mark : marks)
      if (mark > offset) mark += units.size();
  }
  void erase(text::storage const& storage, text::iterator first, text::iterator last) {
    size_t const from = offset_of(storage, first.pos()), to = offset_of(storage, last.pos());
    for (size_t& mark : marks)
      if (mark > from) mark = mark >= to ? mark - (to - from) : from;
  }
  /// In a change over lines a line keeps its first bookmark only.
  void drop_second_ones(text::storage const& storage) {
    std::vector<size_t> kept;
    for (size_t const mark : marks)
      if (kept.empty() || pos_of(storage, kept.back()).line != pos_of(storage, mark).line)
        kept.push_back(mark);
    marks = kept;
  }
  static size_t offset_of(text::storage const& storage, pos at) {
    size_t offset = at.column;
    for (size_t line = 0; line < at.line; ++line) offset += storage.size(line) + 1;
    return offset;
  }
  static pos pos_of(text::storage const& storage, size_t offset) {
    size_t line = 0;
    for (; offset > storage.size(line); ++line) offset -= storage.size(line) + 1;
    return {line, offset};
  }

  std::vector<size_t> marks;  // offsets in the text, in order
};

TEST_F(bookmarks, follow_their_text_under_random_edits_and_come_back) {
  for (unsigned seed = 1; seed <= 40; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    random_source random(seed);
    set("one\ntwo\n\nthree\nfour\nfive");
    naive_bookmarks model;
    for (int step = 0; step < 80; ++step) {
      size_t const line = random.below(storage.lines());
      text::iterator const at(line, random.up_to(storage.size(line)), &storage);
      if (!view.has_bookmark(line) && random.one_in(3)) {
        view.set_bookmark({line, at.column}, true);
        model.marks.push_back(naive_bookmarks::offset_of(storage, at.pos()));
        std::sort(model.marks.begin(), model.marks.end());
      } else if (random.one_in(2)) {
        std::u16string const units = random.text(random.below(6), u"ab\n");
        model.insert(storage, at, units);
        storage.insert(at, units.begin(), units.end());
      } else {
        size_t const other = std::min(line + random.below(3), storage.lines() - 1);
        text::iterator const last(other, random.up_to(storage.size(other)), &storage);
        if (!(at < last)) continue;
        model.erase(storage, at, last);
        auto const& marks = view.bookmark_filter->marks;
        std::vector<pos> const before = marks.list();
        storage.erase(at, last);
        std::vector<pos> const after = marks.list();
        storage.undo();
        ASSERT_EQ(marks.list(), before) << "step " << step;
        storage.redo();
        ASSERT_EQ(marks.list(), after) << "step " << step;
        model.drop_second_ones(storage);
      }
      std::vector<pos> expected;
      for (size_t const mark : model.marks) {
        pos const at = naive_bookmarks::pos_of(storage, mark);
        if (expected.empty() || expected.back().line != at.line) expected.push_back(at);
      }
      ASSERT_EQ(view.bookmark_filter->marks.list(), expected) << "step " << step;
    }
  }
}

}  // namespace
