#include "text/views/folding_filter.h"

#include "data_rows.h"
#include "marked_text.h"
#include "random_text.h"
#include "text/views/soft_wrap_filter.h"

namespace {

using text::pos;
using folding_filter = class text::view::folding_filter;
using folding_t = folding_filter::folding_t;
using line_type = folding_filter::line_type;

folding_filter::pattern pattern(std::u16string_view source) {
  return std::make_unique<oniguruma::ptrn_t>(source.data(), source.data() + source.size(), 0u);
}

class folding : public testing::Test {
 protected:
  folding() { filter.set_patterns(pattern(u"\\{\\s*$"), pattern(u"^\\s*\\}")); }

  void set(std::string const& text) {
    storage.clear();
    filter.reset();
    std::u16string const units = marked_text::units(text);
    storage.insert(storage.end(-1), units.begin(), units.end());
  }
  /// The lines on screen, those with a fold marked by dots.
  std::string shown() {
    std::string result;
    for (size_t row = 0; row < view.lines(); ++row) {
      size_t const line = view.begin(row).base.line;
      EXPECT_EQ(view.line_in_view(view.begin(row)), row);
      EXPECT_TRUE(view.is_visible(view.begin(row).base));
      result += marked_text::utf8(std::u16string(storage.line_units(line)));
      if (filter.folding_type(line) == line_type::folded) result += "...";
      result += "|";
    }
    return result;
  }
  std::string types() {
    std::string result;
    for (size_t line = 0; line < storage.lines(); ++line)
      result += "+-#."[static_cast<size_t>(filter.folding_type(line))];
    return result;
  }
  text::iterator at(size_t line, size_t column) { return {line, column, &storage}; }

  text::storage storage;
  text::view view{storage};
  folding_filter& filter = *view.folding_filter;
};

TEST_F(folding, lines_pair_by_indent) {
  for (auto const& row : data_rows("folding.txt", "types")) {
    set(row[0]);
    EXPECT_EQ(types(), row[1]) << row[0];
  }
  view.set_tab_size(4);
  set("a {\n\tb {\n   }\n}");
  EXPECT_EQ(types(), "++.-");
}

TEST_F(folding, folds_and_unfolds_the_innermost_block) {
  set("0 {\n  1 {\n    2\n  }\n  4 {\n  }\n}\n7");
  ASSERT_TRUE(filter.fold_if_possible(2, false));
  EXPECT_EQ(shown(), "0 {|  1 {...|  4 {|  }|}|7|");
  EXPECT_EQ(view.selection.current_mark.base, at(1, 5));
  EXPECT_FALSE(filter.fold_if_possible(7, false));
  ASSERT_TRUE(filter.fold_if_possible(0, true));
  EXPECT_EQ(shown(), "0 {...|7|");
  EXPECT_EQ(filter.foldings, (folding_filter::folding_set{{0, 6}, {1, 3}, {4, 5}}));
  EXPECT_EQ(filter.in_storage({1, 0}), pos(7, 0));
  // What is hidden in several folds counts once.
  EXPECT_EQ(filter.in_view({7, 1}), pos(1, 1));
  EXPECT_EQ(filter.in_view({3, 2}), pos(0, 2));
  ASSERT_TRUE(filter.toggle_folding(0, false));
  EXPECT_EQ(shown(), "0 {|  1 {...|  4 {...|}|7|");
  EXPECT_TRUE(filter.fold_if_possible(0, false));
  ASSERT_TRUE(filter.unfold_if_possible(0, true));
  EXPECT_TRUE(filter.foldings.empty());

  ASSERT_TRUE(filter.fold_if_possible(0, true));
  view.make_visible(at(2, 0));
  EXPECT_EQ(shown(), "0 {|  1 {|    2|  }|  4 {...|}|7|");
}

TEST_F(folding, folds_must_nest) {
  set("0\n1\n2\n3\n4\n5\n6");
  EXPECT_TRUE(filter.fold_lines(2, 4));
  for (folding_t const bad : {folding_t{1, 3}, {3, 5}, {2, 3}, {3, 4}, {4, 6}, {0, 2}, {5, 5}})
    EXPECT_FALSE(filter.fold_lines(bad.first, bad.last)) << bad.first << "-" << bad.last;
  EXPECT_TRUE(filter.fold_lines(1, 5));
  filter.restore({{3, 9}, {0, 6}, {2, 3}, {6, 0}});
  EXPECT_EQ(filter.foldings, (folding_filter::folding_set{{0, 6}, {1, 5}, {2, 4}}));
  EXPECT_EQ(shown(), "0...|");
}

TEST_F(folding, levels) {
  set("0 {\n  1 {\n    2 {\n    }\n  }\n  5 {\n  }\n}\n8 {\n}");
  EXPECT_EQ(filter.level_of(5), 2u);
  EXPECT_EQ(filter.level_of(3), 3u);
  view.selection.set_caret({&view, at(6, 1)});
  ASSERT_TRUE(filter.fold_level(2));
  EXPECT_EQ(shown(), "0 {|  1 {...|  5 {...|}|8 {|}|");
  EXPECT_EQ(view.selection.current_mark.base, at(5, 5));
  EXPECT_FALSE(filter.fold_level(2));
  ASSERT_TRUE(filter.fold_level(0));
  EXPECT_EQ(shown(), "0 {...|8 {...|");
  ASSERT_TRUE(filter.unfold_level(1));
  EXPECT_EQ(shown(), "0 {|  1 {...|  5 {...|}|8 {|}|");
  ASSERT_TRUE(filter.unfold_level(0));
  EXPECT_EQ(view.lines(), 10u);
}

TEST_F(folding, changes_around_in_and_across_folds) {
  for (auto const& row : data_rows("folding.txt", "changes")) {
    auto const place = [&](size_t field) {
      return at(std::stoul(row[field]), std::stoul(row[field + 1]));
    };
    set("0\n1\n2\n3\n4\n5");
    ASSERT_TRUE(filter.fold_lines(1, 4));
    text::iterator const first = place(0);
    storage.erase(first, place(2));
    std::u16string const units = marked_text::units(row[4]);
    storage.insert(first, units.begin(), units.end());
    EXPECT_EQ(shown(), row[5]) << ::testing::PrintToString(row);
  }
}

/// The rows of a plain list of lines, against coordinates by bisection; markers that are kept
/// against those of a new filter; the width that is kept, and wrapped rows above folds, against
/// those from scratch.
TEST_F(folding, random_edits_keep_folds_markers_and_rows) {
  std::u16string const alphabet = u"{}} \n\nab {\n";
  for (unsigned seed = 1; seed <= 12; ++seed) {
    SCOPED_TRACE(seed);
    random_source random(seed);
    set("");
    view.set_screen_width(4);
    view.set_soft_wrap(seed % 2 == 0);
    std::u16string const start = random.text(150, alphabet);
    storage.insert(at(0, 0), start.begin(), start.end());
    for (int step = 0; step < 250; ++step) {
      auto const place = [&] {
        size_t const line = random.below(storage.lines());
        return at(line, random.up_to(storage.size(line)));
      };
      switch (random.below(6)) {
        case 0:
          filter.toggle_folding(random.below(storage.lines()), random.one_in(2));
          break;
        case 1:
          filter.fold_lines(random.below(storage.lines()), random.below(storage.lines()));
          break;
        case 2:
          random.one_in(2) ? filter.fold_level(random.below(3))
                           : filter.unfold_level(random.below(3));
          break;
        case 3:
          view.make_visible(place());
          break;
        case 4: {
          std::u16string const units = random.text(random.up_to(6), alphabet);
          storage.insert(place(), units.begin(), units.end());
          break;
        }
        default: {
          text::iterator first = place(), last = place();
          if (last < first) std::swap(first, last);
          if (last.line > first.line + 6) last = storage.end(first.line + 3);
          storage.erase(first, last);
        }
      }
      std::vector<size_t> visible;
      for (size_t line = 0; line < storage.lines(); ++line) {
        bool hidden = false, folded = false;
        for (folding_t const& fold : filter.foldings) {
          folded |= fold.first == line;
          ASSERT_LT(fold.first, fold.last);
          ASSERT_LT(fold.last, storage.lines());
          hidden |= fold.first < line && line <= fold.last;
        }
        ASSERT_EQ(filter.is_visible({line, 0}), !hidden);
        ASSERT_EQ(filter.is_folded(line), folded);
        if (!hidden) visible.push_back(line);
      }
      ASSERT_EQ(filter.lines(), visible.size());
      for (size_t row = 0; row < visible.size(); ++row) {
        ASSERT_EQ(filter.in_storage({row, 0}), pos(visible[row], 0));
        ASSERT_EQ(filter.in_view({visible[row], 0}), pos(row, 0));
      }
      std::string const kept = types();
      if (random.one_in(3)) filter.forget_markers();
      ASSERT_EQ(types(), kept);
      if (!view.soft_wrap) {
        size_t const first = random.below(visible.size());
        size_t widest = 0;
        for (size_t row = first; row < visible.size(); ++row)
          widest = std::max(widest, storage.size(visible[row]));
        ASSERT_EQ(view.max_columns_for_range(first, visible.size()), widest);
        for (size_t const line : visible) widest = std::max(widest, storage.size(line));
        ASSERT_EQ(view.columns(), widest);
        continue;
      }
      auto const rows = [&] {
        std::vector<pos> result;
        for (size_t row = 0; row < view.lines(); ++row)
          for (text::iterator const& end : {view.begin(row).base, view.end(row).base})
            result.push_back(end.pos());
        return result;
      };
      std::vector<pos> const incremental = rows();
      view.soft_wrap_filter->reset();
      ASSERT_EQ(rows(), incremental);
    }
  }
}

}  // namespace
