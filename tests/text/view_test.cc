#include "text/views/view.h"

#include "marked_text.h"
#include "test.h"
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
