#include "text/views/soft_wrap_filter.h"

#include "data_rows.h"
#include "marked_text.h"
#include "random_text.h"
#include "text/cell_width.h"
#include "text/views/folding_filter.h"

namespace {

using text::freehanded_t;
using text::iter_from_view_pos;
using text::pos;
using text::view_iterator;

struct row {
  size_t line, first, last;
  bool operator==(row const&) const = default;
};

void PrintTo(row const& r, std::ostream* out) {
  *out << r.line << ":" << r.first << "-" << r.last;
}

/// Where rows begin that continue a line.
size_t indent_of(text::unit_view units, text::view const& view) {
  if (!view.wraps_indented) return 0;
  size_t const blanks = std::min(units.find_first_not_of(u" \t"), units.size());
  size_t column = 0;
  for (char16_t const unit : units.substr(0, blanks))
    column += unit == u'\t' ? view.tab_size - column % view.tab_size : 1;
  return std::min<size_t>(column, view.screen_width / 2);
}

/// Wraps a line cluster by cluster, as one says how it is done.
void wrap_line(text::view const& view, size_t line, std::vector<row>& out) {
  text::unit_view const units = view.storage->line_units(line);
  size_t const tab_size = view.tab_size, indent = indent_of(units, view);
  struct character {
    size_t first, cells;
    bool is_tab, is_blank;
  };
  std::vector<character> all;
  for (size_t at = 0; at < units.size();) {
    auto const cluster = text::measure_cluster(units, at);
    bool const alone = cluster.end == at + 1;
    all.push_back({at, cluster.cells, units[at] == u'\t',
                   alone && (units[at] == u' ' || units[at] == u'\t')});
    at = cluster.end;
  }
  auto const first_of = [&](size_t i) { return i < all.size() ? all[i].first : units.size(); };
  size_t const width = std::max<size_t>(view.screen_width, 1);
  size_t start = 0;
  bool cut = false;
  while (true) {
    // Up to the first character that isn't blank and reaches beyond the width.
    size_t column = start == 0 ? 0 : indent, at = start, blank = start;
    for (; at < all.size(); ++at) {
      character const& c = all[at];
      size_t const cells = c.is_tab ? tab_size - column % tab_size : c.cells;
      if (!c.is_blank && column + cells > width && at > start) break;
      // What was cut off a word counts a cell less.
      column += cut && at == start ? std::max<size_t>(cells, 1) - 1 : cells;
      if (c.is_blank && at + 1 < all.size()) blank = at;
    }
    if (at == all.size()) break;
    bool const soft = blank != start;
    size_t const end = soft ? blank : at - 1;
    out.push_back({line, first_of(start), first_of(end)});
    start = soft ? blank + 1 : at;
    cut = !soft;
  }
  out.push_back({line, first_of(start), units.size()});
}

class soft_wrap : public testing::Test {
 protected:
  void wrap(std::string const& drawing, unsigned width, unsigned tab_size = 4) {
    marked_text::set(view, drawing);
    view.set_tab_size(tab_size);
    view.set_screen_width(width);
    view.set_soft_wrap(true);
  }
  view_iterator at(size_t line, size_t column, size_t offset = 0) {
    return {&view, text::iterator(line, column, &storage), offset};
  }
  std::vector<std::string> rows_as_text() {
    std::vector<std::string> result;
    for (size_t i = 0; i < view.lines(); ++i) {
      text::iterator const first = view.begin(i).base;
      result.push_back(marked_text::utf8(
          std::u16string(storage.line_units(first.line).substr(first.column, view.size(i)))));
    }
    return result;
  }
  std::vector<row> rows() {
    std::vector<row> result;
    for (size_t i = 0; i < view.lines(); ++i) {
      text::iterator const first = view.begin(i).base, last = view.end(i).base;
      EXPECT_EQ(first.line, last.line);
      result.push_back({first.line, first.column, last.column});
    }
    return result;
  }
  std::vector<row> rows_from_scratch() {
    std::vector<row> result;
    for (size_t line = 0; line < storage.lines(); ++line) wrap_line(view, line, result);
    return result;
  }

  text::storage storage;
  text::view view{storage};
};

TEST_F(soft_wrap, breaks_at_the_last_white_space_that_fits) {
  for (auto const& row : data_rows("wrapping.txt", "rows")) {
    wrap(row[0], static_cast<unsigned>(std::stoul(row[1])));
    EXPECT_EQ(rows_as_text(), data_row(row.begin() + 2, row.end())) << row[0] << " in " << row[1];
    EXPECT_EQ(rows(), rows_from_scratch()) << row[0] << " in " << row[1];
  }
}

TEST_F(soft_wrap, positions_between_units_belong_to_one_row) {
  wrap("aaaa bbbb cccc|\nxy", 10);
  EXPECT_EQ(view.line_in_view(at(0, 9)), 0u);
  EXPECT_EQ(view.column_in_view(at(0, 9)), 9u);
  EXPECT_EQ(view.line_in_view(at(0, 10)), 1u);
  EXPECT_EQ(view.column_in_view(at(0, 10)), 0u);
  EXPECT_EQ(view.column_in_view(at(0, 14)), 4u);
  EXPECT_EQ(column_before_wrap(at(0, 14)), 14u);
  EXPECT_EQ(view.line_in_view(at(1, 0)), 2u);
  EXPECT_EQ(view.columns(), 10u);

  view_iterator it = at(0, 9);
  ++it;
  EXPECT_EQ(it, at(0, 10));
  --it;
  EXPECT_EQ(it, at(0, 9));

  EXPECT_EQ(iter_from_view_pos(&view, {1, 2}, freehanded_t::off), at(0, 12));
  EXPECT_EQ(iter_from_view_pos(&view, {0, 99}, freehanded_t::off), at(0, 9));
  EXPECT_EQ(iter_from_view_pos(&view, {1, 99}, freehanded_t::on), at(0, 14, 95));
  EXPECT_EQ(iter_from_view_pos(&view, {99, 1}, freehanded_t::off), at(1, 1));
}

TEST_F(soft_wrap, tabs_of_a_row_are_measured_from_its_start) {
  wrap("aaaaa bbb\tc dd", 10);
  ASSERT_EQ(rows_as_text(), (std::vector<std::string>{"aaaaa bbb", "c dd"}));
  wrap("aaaaaaaaa b\tc", 10);
  ASSERT_EQ(rows_as_text(), (std::vector<std::string>{"aaaaaaaaa", "b\tc"}));
  EXPECT_EQ(view.column_in_view(at(0, 12)), 4u);
  EXPECT_EQ(column_before_wrap(at(0, 12)), 12u);
  EXPECT_EQ(iter_from_view_pos(&view, {1, 2}, freehanded_t::on), at(0, 11, 1));
}

TEST_F(soft_wrap, rows_may_begin_below_the_text_of_their_line) {
  view.set_wraps_indented(true);
  wrap("    aaa bbb ccc\n\tdd ee ff gg", 10);
  EXPECT_EQ(rows_as_text(),
            (std::vector<std::string>{"    aaa", "bbb", "ccc", "\tdd ee", "ff gg"}));
  EXPECT_EQ(view.column_in_view(at(0, 12)), 4u);
  EXPECT_EQ(iter_from_view_pos(&view, {1, 0}, freehanded_t::off), at(0, 8));
  EXPECT_EQ(iter_from_view_pos(&view, {1, 6}, freehanded_t::off), at(0, 10));
  // Not beyond the middle of the screen.
  wrap("          aaa bb cc", 10);
  EXPECT_EQ(rows_as_text(), (std::vector<std::string>{"         ", "aaa", "bb cc"}));
  EXPECT_EQ(view.column_in_view(at(0, 10)), 5u);
  view.set_wraps_indented(false);
  EXPECT_EQ(rows(), rows_from_scratch());
}

/// Fewer kinds of text meet more of the places where a break can move.
std::u16string_view const alphabets[] = {u"abc  ", u"aaaaaaa b\t", u"a \n", u"abcdef\t\n   ", u"a"};

/// Every third text is of other characters, which edits may cut.
std::u16string random_units(random_source& random, unsigned seed, size_t length) {
  return seed % 3 == 0 ? random.characters(length)
                       : random.text(length, alphabets[seed % std::size(alphabets)]);
}

/// Each row as it is drawn, with the cluster at which it is broken.
std::vector<std::u16string> drawn_rows(text::view const& view) {
  std::vector<std::u16string> result;
  for (size_t row = 0; row < view.lines(); ++row) {
    text::iterator const first = view.begin(row).base;
    text::iterator const next = row + 1 < view.lines() ? view.begin(row + 1).base : first;
    bool const is_broken = next.line == first.line && next != first;
    size_t const last = is_broken ? next.column : first.column + view.size(row);
    result.emplace_back(view.column_in_view(view.begin(row)), u'>');
    result.back() += view.storage->line_units(first.line).substr(first.column, last - first.column);
  }
  return result;
}

/// Rows that weren't asked to be drawn again are those from before.
void check_refreshed(text::view const& view, std::vector<std::u16string> const& before) {
  std::vector<std::u16string> const after = drawn_rows(view);
  for (size_t row = 0; row < std::max(before.size(), after.size()); ++row) {
    if (view.first_refresh_line <= row && row < view.last_refresh_line) continue;
    ASSERT_LT(row, std::min(before.size(), after.size()));
    ASSERT_EQ(after[row], before[row])
        << "row " << row << " of those not from " << view.first_refresh_line << " to "
        << view.last_refresh_line;
  }
}

void check_random_edits(unsigned seed, text::view& view) {
  random_source random(seed);
  text::storage& storage = *view.storage;
  view.set_tab_size(static_cast<unsigned>(1 + random.below(5)));
  view.set_screen_width(static_cast<unsigned>(1 + random.below(12)));
  view.set_wraps_indented(seed % 2 == 0);
  view.set_soft_wrap(true);
  auto const check = [&](int step) {
    std::vector<row> expected, found;
    for (size_t line = 0; line < storage.lines(); ++line) wrap_line(view, line, expected);
    for (auto const& range : view.soft_wrap_filter->ranges)
      found.push_back({range.line, range.first, range.last});
    ASSERT_EQ(found, expected) << "step " << step << " width " << view.screen_width << " tab "
                               << view.tab_size << " "
                               << testing::PrintToString(marked_text::units_of(storage));
  };
  for (int step = 0; step < 60; ++step) {
    std::vector<std::u16string> const before = drawn_rows(view);
    view.first_refresh_line = std::numeric_limits<uint32_t>::max();
    view.last_refresh_line = 0;
    size_t const line = random.below(storage.lines());
    // Between code points, as who edits has it.
    auto const place = [&](size_t at_line) {
      size_t const at = random.up_to(storage.size(at_line));
      bool const splits = unicode::splits_pair(storage.line_units(at_line), at);
      return text::iterator(at_line, splits ? at - 1 : at, &storage);
    };
    text::iterator const first = place(line);
    if (random.one_in(12)) {
      view.set_screen_width(static_cast<unsigned>(1 + random.below(12)));
      view.refresh_lines(0, std::numeric_limits<uint32_t>::max());
    } else if (random.one_in(8)) {
      if (view.can_undo()) storage.undo_manager.undo();
    } else if (random.one_in(3)) {
      size_t const other = std::min(line + random.below(3), storage.lines() - 1);
      text::iterator const last = place(other);
      text::undo_group const group(storage.undo_manager);
      if (first <= last) storage.erase(first, last);
    } else {
      size_t const length = random.one_in(4) ? random.below(60) : random.below(4);
      std::u16string const units = random_units(random, seed, length);
      text::undo_group const group(storage.undo_manager);
      storage.insert(first, units.begin(), units.end());
    }
    ASSERT_NO_FATAL_FAILURE(check(step));
    SCOPED_TRACE("step " + std::to_string(step));
    ASSERT_NO_FATAL_FAILURE(check_refreshed(view, before));
  }
}

TEST_F(soft_wrap, edits_give_the_rows_of_wrapping_from_scratch) {
  for (unsigned seed = 1; seed <= 400; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    text::storage edited;
    text::view wrapped(edited);
    ASSERT_NO_FATAL_FAILURE(check_random_edits(seed, wrapped));
  }
}

/// Every position is in exactly one row, and the conversions are each other's inverse.
TEST_F(soft_wrap, positions_and_rows_agree) {
  for (unsigned seed = 1; seed <= 20; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    random_source random(seed);
    view.set_wraps_indented(seed % 2 == 0);
    wrap(marked_text::utf8(random.text(200, u"abcd \t\n")), 7, 3);
    for (size_t line = 0; line < storage.lines(); ++line) {
      for (size_t column = 0; column <= storage.size(line); ++column) {
        view_iterator const it = at(line, column);
        size_t const row = view.line_in_view(it), shown = view.column_in_view(it);
        ASSERT_LE(view.begin(row), it);
        ASSERT_LE(it, view.end(row));
        ASSERT_EQ(iter_from_view_pos(&view, {row, shown}, freehanded_t::off), it);
      }
    }
  }
}

/// Notes the rows that are asked to be drawn.
TEST_F(soft_wrap, typing_refreshes_only_the_rows_that_change) {
  wrap("aaaa bbbb cccc dddd\nxy", 10);
  auto const refreshed = [&](auto edit) {
    view.first_refresh_line = std::numeric_limits<uint32_t>::max();
    view.last_refresh_line = 0;
    edit();
    return std::pair(view.first_refresh_line, view.last_refresh_line);
  };
  auto const all = std::numeric_limits<uint32_t>::max();
  std::u16string const x = u"x", space = u" ", eol = u"\n";
  auto const insert = [&](pos where, std::u16string const& units) {
    return refreshed(
        [&] { storage.insert(text::iterator(where, &storage), units.begin(), units.end()); });
  };
  EXPECT_EQ(insert({0, 12}, x), std::pair(1u, 2u));  // "ccxcc dddd" still fits
  EXPECT_EQ(refreshed([&] { storage.erase(at(0, 12).base); }), std::pair(1u, 2u));
  EXPECT_EQ(insert({0, 14}, eol), std::pair(1u, all));
  EXPECT_EQ(refreshed([&] { storage.erase(at(0, 14).base); }), std::pair(1u, all));
  EXPECT_EQ(insert({1, 0}, x), std::pair(2u, 3u));
  // The upper row takes in a word that became shorter.
  view.set_screen_width(12);
  EXPECT_EQ(insert({0, 11}, space), std::pair(0u, all));
  EXPECT_EQ(view.selection.current_mark, at(0, 0));
}

TEST_F(soft_wrap, changes_of_hidden_text_leave_the_rows) {
  marked_text::set(view, "aaaa bbbb cccc\nhidden text that is long\ndddd eeee ffff");
  ASSERT_TRUE(view.folding_filter->fold_lines(0, 1));
  view.set_screen_width(10);
  view.set_soft_wrap(true);
  std::vector<row> const before = rows();
  ASSERT_EQ(before.size(), 4u);
  std::u16string const units = u"more and more ";
  for (size_t const column : {0u, 3u, 20u}) {
    storage.insert(at(1, column).base, units.begin(), units.end());
    EXPECT_EQ(rows(), before);
    storage.erase(at(1, column + 2).base, at(1, column + 8).base);
    EXPECT_EQ(rows(), before);
  }
}

}  // namespace
