#include <algorithm>

#include "text/unit_search.h"
#include "text/views/view.h"

namespace text {

namespace {

/// The lines of a sequence; one that ends in a line end has none after it.
size_t count_pieces(unit_view units) {
  return count_unit(units, u'\n') + (units.empty() || units.back() != u'\n' ? 1 : 0);
}

template <typename Visit>
void for_each_piece(unit_view units, Visit visit) {
  while (!units.empty()) {
    size_t const length = std::min(units.find(u'\n'), units.size());
    visit(units.substr(0, length));
    units.remove_prefix(std::min(length + 1, units.size()));
  }
}

}  // namespace

void view::replace_columns_with(unit_view units) {
  text::box const extent(this);
  size_t const height = extent.size().lines;
  insert_column_of(units, extent.size(), false);

  size_t const last_row = extent.first_line + std::min(height, count_pieces(units)) - 1;
  size_t const last_column = column_before_wrap(selection.current_mark);
  auto const corner = [&](bool at_last_row, bool at_last_column) {
    return iter_from_hybrid_pos(this,
                                {at_last_row ? last_row : extent.first_line,
                                 at_last_column ? last_column : extent.first_column},
                                freehanded_t::on);
  };
  selection.set_caret(corner(extent.reversed_lines, extent.reversed_columns));
  selection.select_to(corner(!extent.reversed_lines, !extent.reversed_columns), true);
}

void view::insert_column_of(unit_view units, rectangle_size least, bool select) {
  take_selection();
  if (units.empty()) return;
  size_t const first_line = line_before_filters(selection.current_mark);
  size_t const column = column_before_wrap(selection.current_mark);
  size_t const height = std::max(least.lines, count_pieces(units));
  if (storage->lines() < first_line + height)
    storage->insert(storage->end(-1), first_line + height - storage->lines(), u'\n');
  size_t width = least.columns;
  // Measured where the pieces will stand: a tab's width depends on its column.
  for_each_piece(units, [&](unit_view piece) {
    width = std::max(width, expanded_width(piece, column, tab_stops(tab_size)));
  });

  size_t line = first_line;
  for_each_piece(units, [&](unit_view piece) { insert_piece({line++, column}, piece, width); });
  while (line < first_line + height) insert_piece({line++, column}, {}, width);

  auto const corner = [&](size_t at_line, size_t at_column) {
    return iter_from_hybrid_pos(this, {at_line, at_column}, freehanded_t::on);
  };
  if (select) {
    selection.set_caret(corner(first_line, column));
    selection.select_to(corner(first_line + height - 1, column + width), true);
  } else {
    selection.set_caret(corner(first_line, column + width));
  }
}

void view::insert_piece(hybrid_pos const& place, unit_view piece, size_t columns) {
  text::iterator at = make_base_iter(iter_from_hybrid_pos(this, place, freehanded_t::on));
  storage->insert(at, piece.begin(), piece.end());
  // What stands to the right stays in its column.
  if (*at != u'\n')
    storage->insert(at, columns - expanded_width(piece, place.column, tab_stops(tab_size)), u' ');
}

bool view::can_enter_line_append_mode() const {
  if (selection.empty() || selection.column_mode) return false;
  text::iterator const first = selection.first().base, last = selection.last().base;
  size_t const lines = last.line - first.line;
  return lines > 1 || (lines == 1 && last.column != 0);
}

void view::enter_line_append_mode() {
  if (!can_enter_line_append_mode()) return;
  text::iterator const last = selection.last().base;
  text::iterator const caret = storage->end(selection.first().base.line);
  selection.set_caret({this, caret});

  size_t const stop = last.line + (last.column != 0 ? size_t{1} : 0);
  size_t const first = caret.line + size_t{1};
  size_t common = caret.column;
  for (size_t line = first; line < stop; ++line) common = std::min(common, storage->size(line));

  auto const tail = [&](size_t line) {
    size_t const size = storage->size(line);
    return iterator_observer::subset(text::pos(line, size - common), text::pos(line, size));
  };
  std::vector<iterator_observer::mirror> mirrors;
  for (size_t line = first; line < stop; ++line) mirrors.push_back({tail(caret.line), tail(line)});
  mirror_observer.add_mirrors(mirrors);
}

void view::set_freehanded_mode(bool on) {
  if (on == freehanded_mode) return;
  freehanded_mode = on;
  keep_caret_place(freehanded_t::automatic);
}

void view::set_column_mode(bool on) {
  if (on == selection.column_mode) return;
  selection.column_mode = on;
  selection.data.clear();
  if (!freehanded_mode) keep_caret_place(on ? freehanded_t::on : freehanded_t::automatic);
}

void view::keep_caret_place(freehanded_t::type type) {
  view_iterator const& caret = selection.current_mark;
  size_t const row = line_in_view(caret);
  size_t const column = caret.desired_column != 0 ? caret.desired_column : column_in_view(caret);
  view_iterator const kept = iter_from_view_pos(this, {row, column}, type);
  if (selection.empty())
    selection.set_caret(kept);
  else
    selection.select_to(kept, selection.column_mode);
}

}  // namespace text
