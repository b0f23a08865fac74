#include "actions/line_actions.h"

#include <algorithm>
#include <string>
#include <utility>

#include "actions/line_order.h"
#include "actions/selecting.h"
#include "text/views/box.h"

namespace actions {
namespace {

using text::view_iterator;

/// The selection's three marks, to be put back on lines that have moved.
class kept_marks {
 public:
  explicit kept_marks(text::view& view)
      : view_(view),
        first_(view.selection.first_mark),
        last_(view.selection.last_mark),
        caret_(view.selection.current_mark) {}

  void put_back(std::ptrdiff_t lines) const {
    text::selection& selection = view_.selection;
    selection.select(moved(first_, lines), moved(last_, lines), selection.column_mode);
    selection.current_mark = moved(caret_, lines);
    view_.make_visible(selection.current_mark.base);
    view_.scroll_caret_pending = true;
  }

 private:
  /// A mark that stood at the start of the line after the text may have no such line now.
  view_iterator moved(view_iterator const& mark, std::ptrdiff_t lines) const {
    text::storage& storage = *view_.storage;
    auto const line = static_cast<std::size_t>(static_cast<std::ptrdiff_t>(mark.base.line) + lines);
    if (line >= storage.lines()) return {&view_, storage.end(-1)};
    return {&view_, text::iterator(line, mark.base.column, &storage), mark.offset};
  }

  text::view& view_;
  view_iterator first_, last_, caret_;
};

text::iterator line_start(text::view* view, std::size_t line) {
  return view->storage->begin_of_line(line);
}

/// Takes a line away with one of its line ends, and gives its text.
std::u16string take_line(text::view* view, std::size_t line) {
  text::storage& storage = *view->storage;
  std::u16string const taken(storage.line_units(line));
  if (line + 1 < storage.lines())
    storage.erase(line_start(view, line), line_start(view, line + 1));
  else
    storage.erase(line_start(view, line) - 1, storage.end(-1));
  return taken;
}

void put_line_before(text::view* view, std::size_t line, std::u16string added) {
  added += u'\n';
  text::iterator const at = line_start(view, line);
  view->storage->insert(at, added.begin(), added.end());
}

bool move_lines(text::view* view, bool up) {
  text::storage& storage = *view->storage;
  auto const [first, last] = selected_lines(*view);
  // What follows the last line end is no line to change places with.
  std::size_t const lines = storage.lines() - (storage.size(storage.lines() - 1) == 0 ? 1 : 0);
  if (last >= lines || (up ? first == 0 : last + 1 == lines)) return false;
  // The neighbour moves, so that what is tied to the lines themselves stays with them.
  kept_marks const marks(*view);
  if (up) {
    std::u16string neighbour = take_line(view, first - 1);
    if (last < storage.lines()) {
      put_line_before(view, last, std::move(neighbour));
    } else {
      neighbour.insert(0, 1, u'\n');
      storage.insert(storage.end(-1), neighbour.begin(), neighbour.end());
    }
  } else {
    put_line_before(view, first, take_line(view, last + 1));
  }
  marks.put_back(up ? -1 : 1);
  return true;
}

bool has_whole_lines(text::view const& view) {
  text::selection const& selection = view.selection;
  view_iterator const first = selection.first(), last = selection.last();
  if (selection.column_mode || first.base.column != 0 || first.offset != 0) return false;
  return last.base == view.storage->end(-1) ||
         (last.base.column == 0 && last.offset == 0 && last.base.line > first.base.line);
}

view_iterator at_column(text::view* view, std::size_t line, std::size_t column) {
  bool const keeps = view->selection.column_mode;
  return iter_from_hybrid_pos(view, {line, column},
                              keeps ? text::freehanded_t::on : text::freehanded_t::automatic);
}

/// Has `order` rewrite the selected lines, or all of them.
template <typename Order>
void rewrite_lines(text::view* view, Order order) {
  text::selection& selection = view->selection;
  bool const had_lines =
      !selection.empty() && selection.first().base.line != selection.last().base.line;
  if (selection.column_mode) selection.select(selection.first(), selection.last(), false);
  if (had_lines)
    select_hard_line(view);
  else
    select_all(view);
  auto const caret = selection.current_mark;
  std::u16string const result = order(selection.units());
  if (text::unit_view(result) != selection.units())
    view->replace_selection(result.begin(), result.end());
  if (had_lines) return;
  std::size_t const line = std::min<std::size_t>(caret.base.line, view->storage->lines() - 1);
  selection.set_caret({view, text::iterator(line, 0, view->storage)});
}

}  // namespace

bool view_move_lines_up(text::view* view) {
  return move_lines(view, true);
}

bool view_move_lines_down(text::view* view) {
  return move_lines(view, false);
}

bool view_move_selection_line_up(text::view* view) {
  if (has_whole_lines(*view)) return move_lines(view, true);
  text::box const extent(view);
  if (extent.first_line == 0) return false;
  view->move_selection_to(at_column(view, extent.first_line - 1, extent.first_column));
  return true;
}

bool view_move_selection_line_down(text::view* view) {
  if (has_whole_lines(*view)) return move_lines(view, false);
  text::box const extent(view);
  std::size_t const lines = view->storage->lines();
  std::size_t const target =
      view->selection.column_mode ? extent.first_line + 1 : extent.last_line + 1;
  if (extent.last_line + 1 >= lines) return false;
  view->move_selection_to(at_column(view, target, extent.first_column));
  return true;
}

bool view_move_selection_column_left(text::view* view) {
  text::box const extent(view);
  if (view->selection.column_mode) {
    if (extent.first_column == 0) return false;
    view->move_selection_to(iter_from_hybrid_pos(view, {extent.first_line, extent.first_column - 1},
                                                 text::freehanded_t::on));
    return true;
  }
  auto to = view->selection.first();
  if (!view->has_selection() || to == view->begin(0)) return false;
  view->move_selection_to(--to);
  return true;
}

bool view_move_selection_column_right(text::view* view) {
  text::box const extent(view);
  if (view->selection.column_mode) {
    view->move_selection_to(iter_from_hybrid_pos(view, {extent.first_line, extent.first_column + 1},
                                                 text::freehanded_t::on));
    return true;
  }
  auto to = view->selection.last();
  if (!view->has_selection() || to == view->end()) return false;
  view->move_selection_to(++to);
  return true;
}

void view_duplicate(text::view* view) {
  text::selection& selection = view->selection;
  text::storage& storage = *view->storage;
  if (selection.column_mode) {
    std::u16string const text(selection.units());
    text::box const extent(view);
    selection.set_caret(at_column(view, extent.first_line, extent.last_column));
    view->insert_column(text.begin(), text.end(), extent.size(), true);
    return;
  }
  if (view->has_selection()) {
    text::iterator const at = make_base_iter(selection.last());
    bool const backward = selection.last_mark < selection.first_mark;
    std::u16string const text(selection.units());
    view_iterator const start(view, at);
    view_iterator const end(view, storage.insert(at, text.begin(), text.end()));
    selection.set_caret(backward ? start : end);
    selection.select(backward ? end : start, backward ? start : end, false);
  } else {
    kept_marks const marks(*view);
    std::size_t const line = selection.current_mark.base.line;
    std::u16string copy(storage.line_units(line));
    copy.insert(0, 1, u'\n');
    text::iterator const at = storage.end(line);
    storage.insert(at, copy.begin(), copy.end());
    marks.put_back(1);
  }
  view->scroll_caret_pending = true;
}

void view_delete_lines(text::view* view) {
  text::selection& selection = view->selection;
  text::storage& storage = *view->storage;
  auto const [first, last] = selected_lines(*view);
  std::size_t const column = column_before_wrap(selection.current_mark);
  if (last + 1 < storage.lines())
    storage.erase(line_start(view, first), line_start(view, last + 1));
  else if (first != 0)
    storage.erase(line_start(view, first) - 1, storage.end(-1));
  else
    storage.erase(line_start(view, 0), storage.end(-1));
  std::size_t const line = std::min(first, storage.lines() - 1);
  selection.set_caret(iter_from_hybrid_pos(view, {line, column}, text::freehanded_t::automatic));
  view->scroll_caret_pending = true;
}

bool view_join_lines(text::view* view) {
  text::selection& selection = view->selection;
  text::storage& storage = *view->storage;
  auto [first, last] = selected_lines(*view);
  if (first == last) ++last;
  if (last == storage.lines()) return false;
  std::size_t const before_last =
      storage.line_units(last - 1).find_last_not_of(u" \t") + 1;  // 0 where there is nothing else
  bool const is_pair = last == first + 1;
  selection.select({view, line_start(view, first)}, {view, storage.end(last)}, false);
  std::u16string const joined = joined_lines(selection.units());
  view->replace_selection(joined.begin(), joined.end());
  // Between two lines the caret goes to where they meet, as a further line may follow.
  std::size_t const column = is_pair ? std::min(before_last, joined.size()) : joined.size();
  selection.set_caret({view, text::iterator(first, column, &storage)});
  view->scroll_caret_pending = true;
  return true;
}

void view_sort_lines(text::view* view) {
  rewrite_lines(view, sorted_lines);
}

void view_unique_lines(text::view* view) {
  rewrite_lines(view, unique_lines);
}

void view_reverse_lines(text::view* view) {
  rewrite_lines(view, reversed_lines);
}

}  // namespace actions
