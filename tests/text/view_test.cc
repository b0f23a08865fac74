#include "text/views/view.h"

#include "marked_text.h"
#include "random_text.h"
#include "test.h"
#include "text/views/bookmark_filter.h"
#include "text/views/mark_history.h"
#include "text/views/view_filter.h"

namespace {

using text::freehanded_t;
using text::iter_from_hybrid_pos;
using text::iter_from_view_pos;
using text::pos;
using text::view_iterator;

class view_test : public testing::Test {
 protected:
  void set(std::string const& drawing) { marked_text::set(view, drawing); }
  std::string get() { return marked_text::get(view); }
  void insert(text::iterator at, std::string const& text) {
    std::u16string const units = marked_text::units(text);
    storage.insert(at, units.begin(), units.end());
  }
  view_iterator at(size_t line, size_t column, size_t offset = 0) {
    return {&view, text::iterator(line, column, &storage), offset};
  }
  /// What the view's user does around an action.
  template <typename Action>
  void act(Action action) {
    text::undo_group group(storage.undo_manager);
    view.saved_selection = view.selection;
    view.saved_selection_pending = true;
    action();
    if (!view.saved_selection_pending)
      view.view_filter->selections.store({storage.previous_memento, storage.current_memento},
                                         view.selection);
    view.saved_selection_pending = false;
  }
  void type(std::string const& text) {
    std::u16string const units = marked_text::units(text);
    act([&] { view.insert(units.begin(), units.end()); });
  }

  text::storage storage;
  text::view view{storage};
};

TEST_F(view_test, columns_count_tabs_up_to_the_next_stop) {
  set("a\tb\n\t\tx");
  view.set_tab_size(4);
  EXPECT_EQ(view.column_in_view(at(0, 1)), 1u);
  EXPECT_EQ(view.column_in_view(at(0, 1, 2)), 3u);
  EXPECT_EQ(view.column_in_view(at(0, 3)), 5u);
  EXPECT_EQ(column_before_wrap(at(1, 2)), 8u);
  // Across a line end, which counts 1, the column goes on.
  EXPECT_EQ(view.width_when_expanding_tabs(at(0, 2).base, at(1, 1).base), 4u);
  EXPECT_EQ(view.width_when_expanding_tabs(at(0, 1).base, at(0, 2).base, 2), 2u);
}

struct conversion {
  size_t column;
  freehanded_t::type type;
  size_t unit, offset;
};

TEST_F(view_test, hybrid_positions_inside_tabs_and_past_line_ends) {
  set("a\tb");
  view.set_tab_size(4);
  for (conversion const& row : std::vector<conversion>{{0, freehanded_t::on, 0, 0},
                                                       {1, freehanded_t::on, 1, 0},
                                                       {3, freehanded_t::on, 1, 2},
                                                       {3, freehanded_t::off, 1, 0},
                                                       {3, freehanded_t::automatic, 1, 0},
                                                       {4, freehanded_t::on, 2, 0},
                                                       {9, freehanded_t::on, 3, 4},
                                                       {9, freehanded_t::off, 3, 0}}) {
    auto const hybrid = iter_from_hybrid_pos(&view, {0, row.column}, row.type);
    EXPECT_EQ(hybrid, at(0, row.unit, row.offset)) << row.column;
    EXPECT_EQ(hybrid.desired_column, 0u);
    auto const shown = iter_from_view_pos(&view, {0, row.column}, row.type);
    EXPECT_EQ(shown, hybrid) << row.column;
    EXPECT_EQ(shown.desired_column, row.column);
  }
  view.freehanded_mode = true;
  EXPECT_EQ(iter_from_hybrid_pos(&view, {0, 9}, freehanded_t::automatic), at(0, 3, 4));
  EXPECT_EQ(iter_from_view_pos(&view, {7, 1}, freehanded_t::off).base.pos(), pos(0, 1));
}

TEST_F(view_test, make_base_iter_changes_the_text_for_virtual_columns) {
  set("\tx\nab");
  view.set_tab_size(4);
  EXPECT_EQ(make_base_iter(at(0, 0, 2)).pos(), pos(0, 2));
  EXPECT_EQ(marked_text::text_of(storage), "    x\nab");
  EXPECT_EQ(make_base_iter(at(1, 2, 5)).pos(), pos(1, 7));
  EXPECT_EQ(marked_text::text_of(storage), "    x\nab     ");
  uint32_t const memento = storage.current_memento;
  EXPECT_EQ(make_base_iter(at(1, 1)).pos(), pos(1, 1));
  EXPECT_EQ(storage.current_memento, memento);
}

TEST_F(view_test, stepping_stops_at_both_ends) {
  set("a\nb");
  view_iterator it = view.end();
  it.offset = 3;
  it.desired_column = 7;
  ++it;
  EXPECT_EQ(it, at(1, 1, 3));
  EXPECT_EQ(it.desired_column, 7u);
  --it;
  EXPECT_EQ(it, at(1, 1));
  it = view.begin(0);
  it.desired_column = 7;
  --it;
  EXPECT_EQ(it, at(0, 0));
  EXPECT_EQ(it.desired_column, 0u);
  ++it;
  ++it;
  EXPECT_EQ(it, at(1, 0));
  --it;
  EXPECT_EQ(it, at(0, 1));
}

TEST_F(view_test, caret_is_parked_during_a_change) {
  set("one\ntwo\nthr|ee");
  insert(storage.begin_of_line(1), "x");
  EXPECT_EQ(get(), "|one\nxtwo\nthree");
}

TEST_F(view_test, undo_and_redo_bring_back_selections) {
  set("one [two] three");
  type("2");
  type("!");
  EXPECT_EQ(get(), "one 2!| three");
  view.selection.set_caret(at(0, 0));
  storage.undo_manager.undo();
  EXPECT_EQ(get(), "one 2| three");
  storage.undo_manager.undo();
  EXPECT_EQ(get(), "one [two] three");
  storage.undo_manager.redo();
  EXPECT_EQ(get(), "one 2| three");
}

TEST_F(view_test, selections_of_states_that_are_out_of_reach_are_forgotten) {
  auto const known = [&] {
    uint32_t n = 0;
    for (uint32_t state = 1; state < storage.next_memento; ++state)
      n += view.view_filter->selections.contains({state - 1, state});
    return n;
  };
  for (int n = 0; n < 500; ++n) {
    type("x");
    if (n >= 100) storage.undo_manager.undo();
  }
  EXPECT_GE(known(), 100u);
  EXPECT_LT(known(), 150u);
  while (storage.undo_manager.can_undo()) storage.undo_manager.undo();
  EXPECT_EQ(get(), "|");
}

TEST_F(view_test, changes_ask_for_their_rows_to_be_drawn) {
  set("a\nb\nc");
  auto const refreshed = [&] {
    auto const range = std::pair(view.first_refresh_line, view.last_refresh_line);
    view.first_refresh_line = std::numeric_limits<uint32_t>::max();
    view.last_refresh_line = 0;
    return range;
  };
  refreshed();
  insert(storage.begin_of_line(1), "x");
  EXPECT_EQ(refreshed(), std::pair(1u, 2u));
  insert(storage.begin_of_line(1), "\n");
  EXPECT_EQ(refreshed(), std::pair(1u, std::numeric_limits<uint32_t>::max()));
  storage.erase(storage.begin_of_line(2));
  storage.erase(storage.begin_of_line(0));
  EXPECT_EQ(refreshed(), std::pair(0u, 3u));
}

TEST_F(view_test, widest_line_is_measured_again_only_when_it_shrinks) {
  set("long line\nshort\nlonger line");
  EXPECT_EQ(view.columns(), 11u);
  insert(storage.begin_of_line(1), "some ");
  EXPECT_EQ(view.max_columns, 11u);
  insert(storage.begin_of_line(0), "the longest ");
  EXPECT_EQ(view.max_columns, 21u);
  storage.erase(storage.begin_of_line(2));
  EXPECT_EQ(view.max_columns, 21u);
  storage.erase(storage.begin_of_line(0));
  EXPECT_EQ(view.max_columns, text::view::unknown_columns);
  EXPECT_EQ(view.columns(), 20u);
  insert(storage.begin_of_line(0) + 3, "\n");
  EXPECT_EQ(view.columns(), 17u);
  view.set_tab_size(8);
  EXPECT_EQ(view.max_columns, text::view::unknown_columns);
}

TEST_F(view_test, columns_equal_the_widest_line_under_random_edits) {
  for (unsigned seed = 1; seed <= 20; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    random_source random(seed);
    storage.clear();
    for (int step = 0; step < 60; ++step) {
      size_t const line = random.below(storage.lines());
      text::iterator const first(line, random.up_to(storage.size(line)), &storage);
      size_t const other = std::min(line + random.below(3), storage.lines() - 1);
      text::iterator const last(other, random.up_to(storage.size(other)), &storage);
      if (random.one_in(3) && first <= last) {
        storage.erase(first, last);
      } else {
        std::u16string const text = random.text(random.below(9), u"ab\t\n");
        storage.insert(first, text.begin(), text.end());
      }
      if (random.one_in(3)) continue;
      size_t widest = 0;
      for (size_t i = 0; i < storage.lines(); ++i)
        widest = std::max(
            widest, text::expanded_width(storage.line_units(i), 0, text::tab_stops(view.tab_size)));
      ASSERT_EQ(view.columns(), widest);
      ASSERT_EQ(view.selection.current_mark.base.pos(), pos(0, 0));
    }
  }
}

/// Notes the order in which the filters and observers of a view hear of a change.
class noting_snippet_observer : public text::snippet_observer_t {
 public:
  noting_snippet_observer(text::storage& storage, text::iterator_observer::subset stop)
      : storage_(storage), observer_(storage, false) {
    range_ = observer_.add_notify(stop);
  }
  bool is_running() const override { return running; }
  text::iterator_observer::subset active_tab_stop() const override { return *range_; }
  void did_insert(text::iterator const& first, text::iterator const& last) override {
    observer_.did_insert(first, last);
  }
  void will_erase(text::iterator const& first, text::iterator const& last) override {
    observer_.will_erase(first, last);
  }
  /// A mirror before the stop: what changes the stop's text writes there too.
  void did_change_memento(unsigned long, unsigned long) override {
    if (std::exchange(writing_, true)) return;
    storage_.insert(storage_.begin_of_line(0), 2, u'-');
    writing_ = false;
  }

  bool running = true;

 private:
  text::storage& storage_;
  text::iterator_observer observer_;
  text::iterator_observer::notification_list::iterator range_;
  bool writing_ = false;
};

TEST_F(view_test, editing_in_a_tab_stop_follows_the_stop) {
  set("m stop| end\n");
  view.set_snippet_observer(std::make_unique<noting_snippet_observer>(
      storage, text::iterator_observer::subset(pos(0, 2), pos(0, 6))));
  type("s");
  EXPECT_EQ(get(), "--m stops| end\n");
  view.selection.select_to(at(0, 6), false);
  act([&] { view.erase_selection(); });
  EXPECT_EQ(get(), "----m st| end\n");
  view.selection.set_caret(view.end());
  type("out");
  EXPECT_EQ(get(), "------m st end\nout|");
  view.set_snippet_observer(nullptr);
  type("!");
  EXPECT_EQ(get(), "------m st end\nout!|");
}

// What a change takes of bookmarks comes back when it is taken back, unless the user has changed
// them meanwhile on the lines concerned.
TEST_F(view_test, bookmarks_come_back_with_the_text_they_mark) {
  set("zero|\none\ntwo\nthree\nfour");
  for (size_t line : {1, 2, 4}) view.set_bookmark({line, 2}, true);
  auto const bookmarks = [&] { return view.bookmark_filter->marks.list(); };
  auto const before = bookmarks();
  auto const erase = [&] {
    text::undo_group const group(storage.undo_manager);
    storage.erase({0, 2, &storage}, {3, 1, &storage});
  };
  erase();
  auto const after = bookmarks();
  EXPECT_EQ(after, (std::vector<text::pos>{{0, 2}, {1, 2}}));
  for (int n = 0; n < 2; ++n) {
    storage.undo_manager.undo();
    EXPECT_EQ(bookmarks(), before);
    storage.undo_manager.redo();
    EXPECT_EQ(bookmarks(), after);
  }
  view.set_bookmark({0, 2}, false);
  storage.undo_manager.undo();
  EXPECT_EQ(bookmarks(), (std::vector<text::pos>{{4, 2}}));
  erase();
  EXPECT_TRUE(view.mark_history->empty());
}

TEST_F(view_test, views_of_one_storage_keep_apart) {
  set("abc|");
  size_t const observers = storage.observers.size();
  {
    text::view other(storage);
    other.selection.set_caret({&other, storage.begin_of_line(0)});
    std::u16string const text = u"x";
    other.insert(text.begin(), text.end());
    EXPECT_EQ(marked_text::get(other), "x|abc");
    EXPECT_EQ(get(), "|xabc");
  }
  EXPECT_EQ(storage.observers.size(), observers);
  type("y");
  EXPECT_EQ(get(), "y|xabc");
}

}  // namespace
