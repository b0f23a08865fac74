#include <algorithm>
#include <optional>

#include "text/cell_width.h"
#include "text/convert_tabs.h"
#include "text/views/view.h"

namespace text {

namespace {

/// What overwrite mode leaves of a text: as many blanks as there were cells, a tab counting as one,
/// and line ends without blanks before them.
std::vector<char_t> blanked(text::iterator const& first, text::iterator const& last) {
  std::vector<char_t> units;
  append_units(first, last, units);
  unit_view rest(units.data(), units.size());
  std::vector<char_t> result;
  while (true) {
    unit_view const line = rest.substr(0, rest.find(u'\n'));
    if (line.size() == rest.size()) break;
    result.push_back(u'\n');
    rest.remove_prefix(line.size() + 1);
  }
  size_t blanks = 0;
  for (size_t at = 0; at < rest.size();) {
    measured_cluster const measured = measure_cluster(rest, at);
    blanks += measured.cells;
    at = measured.end;
  }
  result.insert(result.end(), blanks, u' ');
  return result;
}

}  // namespace

/// Keeps a position of the active tab stop as its distance from the stop's start: mirrors that
/// stand before the stop move it while the text changes.
class view::tab_stop_anchor {
 public:
  tab_stop_anchor(text::view const& view, text::iterator const& it, bool inside_stop)
      : view_(view) {
    if (inside_stop) distance_ = it - start();
  }

  /// Whether the position was in the stop, and its snippet still runs.
  bool has_position() const { return distance_ && view_.is_snippet_running(); }
  text::iterator position() const { return start() + *distance_; }

 private:
  text::iterator start() const {
    return {view_.snippet_observer->active_tab_stop().first(), view_.storage};
  }

  text::view const& view_;
  std::optional<std::ptrdiff_t> distance_;
};

bool view::is_snippet_running() const {
  return snippet_observer && snippet_observer->is_running();
}

bool view::is_in_tab_stop(text::iterator const& it) const {
  return is_snippet_running() && inside(it, snippet_observer->active_tab_stop());
}

view_iterator view::erase(view_iterator first, view_iterator last) {
  text::iterator from = first.base, to = last.base;
  size_t padding = first.offset;
  if (last.offset != 0 && *to == u'\t') {
    padding += tab_width(column_before_wrap(last), tab_stops(tab_size));
    ++to;
  }
  if (overwrite_mode) {
    std::vector<char_t> const blanks = blanked(from, to);
    storage->erase(from, to);
    storage->insert(std::as_const(from), blanks.begin(), blanks.end());
    storage->insert(from, padding, u' ');
  } else {
    tab_stop_anchor const anchor(*this, from,
                                 is_in_tab_stop(first.base) && is_in_tab_stop(last.base));
    storage->erase(from, to);
    storage->insert(from, padding, u' ');
    if (anchor.has_position()) from = anchor.position();
  }
  return {this, from + first.offset};
}

void view::take_selection() {
  if (selection.empty()) return;
  view_iterator result;
  if (selection.column_mode) {
    // From the bottom up, so that lines keep their numbers.
    text::box const extent(this);
    for (size_t line = extent.last_line; line-- > extent.first_line;) {
      auto const right = iter_from_hybrid_pos(this, {line, extent.last_column}, freehanded_t::on);
      auto const left = iter_from_hybrid_pos(this, {line, extent.first_column}, freehanded_t::on);
      result = erase(left, right);
    }
  } else {
    result = erase(selection.first(), selection.last());
  }
  selection.set_caret(result);
}

view_iterator view::erase_selection() {
  if (selection.empty()) return selection.first();
  take_selection();
  text::iterator at = selection.current_mark.base;
  size_t const column = cluster_start_from(storage->line_units(at.line), at.column);
  if (column != at.column) selection.set_caret({this, text::iterator(at.line, column, storage)});
  return selection.current_mark;
}

void view::insert_units(unit_view units) {
  size_t const count = selection.column_mode ? line_before_filters(selection.last()) -
                                                   line_before_filters(selection.first()) + 1
                                             : 1;
  take_selection();
  if (units.empty()) return;
  text::iterator const base = make_base_iter(selection.current_mark);
  add_column_mirrors(base, count);

  tab_stop_anchor const anchor(*this, base, is_in_tab_stop(base));
  text::iterator const after = storage->insert(base, units.begin(), units.end());
  // Text typed outside the active tab stop is no part of it: the caret goes just after it.
  selection.set_caret({this, anchor.has_position()
                                 ? anchor.position() + static_cast<std::ptrdiff_t>(units.size())
                                 : after});
}

void view::add_column_mirrors(text::iterator const& base, size_t count) {
  if (count == 1) return;
  size_t const column = column_before_wrap({this, base});
  std::vector<iterator_observer::mirror> mirrors;
  for (size_t line = base.line + size_t{1}; line < base.line + count; ++line) {
    text::iterator const at = iter_from_hybrid_pos(this, {line, column}, freehanded_t::off).base;
    mirrors.push_back({{base, base}, {at, at}});
  }
  mirror_observer.add_mirrors(mirrors);
}

void view::replace_selection_with(unit_view units) {
  if (selection.column_mode) return replace_columns_with(units);
  bool const backward = selection.last_mark < selection.first_mark;
  text::iterator const first = selection.first().base;
  text::iterator const caret = selection.current_mark.base;
  std::ptrdiff_t caret_offset = caret < first ? 0 : caret - first;
  if (selection.current_mark == selection.last()) caret_offset = std::numeric_limits<int>::max();

  take_selection();
  selection.set_caret({this, make_base_iter(selection.current_mark)});
  insert_units(units);

  auto const length = static_cast<std::ptrdiff_t>(units.size());
  view_iterator const end(this, selection.current_mark.base);
  view_iterator const start(this, end.base - length);
  // An offset in the old text may be inside a character of the new one.
  text::iterator kept = start.base + std::min(length, caret_offset);
  kept.column =
      static_cast<uint32_t>(cluster_start_from(storage->line_units(kept.line), kept.column));
  selection.set_caret({this, kept});
  if (backward)
    selection.select(end, start, false);
  else
    selection.select(start, end, false);
}

void view::move_selection_to(view_iterator to) {
  std::vector<char_t> units(selection.begin(), selection.end());
  bool const columns = selection.column_mode;
  text::box const extent(this);
  text::iterator const at = erase_selection_keeping(to.base);
  in_view(at);
  selection.set_caret({this, at, to.offset});
  if (!columns) return replace_selection(units.begin(), units.end());

  size_t const column = column_before_wrap(selection.current_mark);
  if (extent.first_column % tab_size != column % tab_size) {
    units = convert_tabs_to_spaces({units.data(), units.size()}, extent.first_column,
                                   tab_stops(tab_size));
  }
  insert_column(units.begin(), units.end(), extent.size(), true);
}

text::iterator view::erase_selection_keeping(text::iterator const& it) {
  iterator_observer keeper(*storage, false);
  auto const kept = keeper.add_notify({it, it});
  auto const id = storage->add_observer(&keeper);
  try {
    take_selection();
  } catch (...) {
    storage->observers.erase(id);
    throw;
  }
  storage->observers.erase(id);
  return {kept->first(), storage};
}

}  // namespace text
