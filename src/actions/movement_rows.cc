#include "actions/movement.h"

namespace actions {
namespace {

size_t aimed_column(text::view_iterator const& it) {
  return it.desired_column != 0 ? it.desired_column : it.view->column_in_view(it);
}

text::view_iterator at_row(text::view_iterator const& it, size_t row, size_t column) {
  auto const type =
      it.view->selection.column_mode ? text::freehanded_t::on : text::freehanded_t::automatic;
  return iter_from_view_pos(it.view, {row, column}, type);
}

}  // namespace

text::view_iterator up(text::view_iterator const& it) {
  size_t const row = it.view->line_in_view(it), column = aimed_column(it);
  auto result = row != 0 ? at_row(it, row - 1, column) : it.view->begin(0);
  result.desired_column = static_cast<uint32_t>(column);
  return result;
}

text::view_iterator down(text::view_iterator const& it) {
  size_t const row = it.view->line_in_view(it), column = aimed_column(it);
  bool const is_last = row + 1 >= it.view->lines();
  auto result = is_last ? it.view->end() : at_row(it, row + 1, column);
  result.desired_column = static_cast<uint32_t>(column);
  return result;
}

text::view_iterator to_beginning_of_line(text::view_iterator const& it) {
  return it.view->begin(it.view->line_in_view(it));
}

text::view_iterator to_text_or_beginning_of_line(text::view_iterator const& it) {
  text::view_iterator const row = to_beginning_of_line(it);
  if (row.base.column != 0 && it != row) return row;
  text::iterator const line = it.base.storage->begin_of_line(it.base.line);
  std::size_t const text = it.base.storage->line_units(it.base.line).find_first_not_of(u" \t");
  text::view_iterator const begin(it.view, line);
  if (text == text::unit_view::npos) return begin;
  text::view_iterator const first(it.view, line + static_cast<std::ptrdiff_t>(text));
  return it == first ? begin : first;
}

text::view_iterator to_end_of_line(text::view_iterator const& it) {
  return it.view->end(it.view->line_in_view(it));
}

text::view_iterator to_beginning_of_document(text::view_iterator const& it) {
  return it.view->begin(0);
}

text::view_iterator to_end_of_document(text::view_iterator const& it) {
  return it.view->end();
}

}  // namespace actions
