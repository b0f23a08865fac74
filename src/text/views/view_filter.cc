#include "text/views/view_filter.h"

#include <algorithm>

namespace text {

view::storage_filter::storage_filter(text::view& view)
    : view_(view), storage_(*view.storage), observer_id(storage_.add_observer(this)) {}

view::storage_filter::~storage_filter() {
  storage_.observers.erase(observer_id);
}

void view::storage_filter::did_insert(text::iterator const& first, text::iterator const& last) {
  view_.long_lines().did_insert(first.pos(), last.pos());
  filter::did_insert(first.pos(), last.pos());
}

void view::storage_filter::will_erase(text::iterator const& first, text::iterator const& last) {
  view_.long_lines().will_erase(first.pos(), last.pos());
  filter::will_erase(first.pos(), last.pos());
}

void view::storage_filter::did_erase(text::iterator const& pos, int length) {
  view_.long_lines().did_erase();
  filter::did_erase(pos, length);
}

text::iterator view::storage_filter::begin(unsigned long line) const {
  return storage_.begin_of_line(line);
}

text::iterator view::storage_filter::end(unsigned long line) const {
  return storage_.end(line);
}

size_t view::storage_filter::lines() const {
  return storage_.lines();
}

void view::view_filter::will_change_memento(unsigned long from, unsigned long to) {
  undo_key const back{static_cast<uint32_t>(to), static_cast<uint32_t>(from)};
  if (view_.saved_selection_pending && !selections.contains(back))
    selections.store(back, view_.saved_selection);
  view_.saved_selection_pending = false;
  bool const is_new = to >= view_.storage->next_memento;
  if (is_new) selections.forget_between(back.to, back.from);
  filter::will_change_memento(from, to);
}

void view::view_filter::did_change_memento(unsigned long from, unsigned long to) {
  undo_key const step{static_cast<uint32_t>(from), static_cast<uint32_t>(to)};
  if (auto kept = selections.find(step, view_)) view_.selection = *std::move(kept);
  filter::did_change_memento(from, to);
}

void view::view_filter::will_insert(text::iterator const& pos, int length) {
  // The line may be the only one of this width.
  if (view_.knows_max_columns() &&
      view_.row_width(view_.line_in_view({&view_, pos})) == view_.max_columns)
    least_columns_ = view_.forget_max_columns();
  filter::will_insert(pos, length);
}

void view::view_filter::did_insert(text::pos const& first, text::pos const& last) {
  refresh(first, last);
  park_caret();
  filter::did_insert(first, last);
  bool const was_widest = least_columns_ != unknown_columns;
  // What an edit shows by opening a fold comes here after the edit itself.
  if (!was_widest && !view_.knows_max_columns()) return;
  size_t const width = view_.max_columns_for_range(first.line, last.line + size_t{1});
  if (!was_widest)
    view_.raise_max_columns(width);
  else if (width >= least_columns_)
    view_.grown_columns_ = static_cast<unsigned>(width);
  least_columns_ = unknown_columns;
}

void view::view_filter::will_erase(text::pos const& first, text::pos const& last) {
  if (view_.knows_max_columns() &&
      view_.max_columns_for_range(first.line, last.line + size_t{1}) == view_.max_columns)
    view_.forget_max_columns();
  refresh(first, last);
  park_caret();
  filter::will_erase(first, last);
}

void view::view_filter::did_erase(text::iterator const& pos, int length) {
  if (view_.max_columns != unknown_columns)
    view_.raise_max_columns(view_.row_width(view_.line_in_view({&view_, pos})));
  filter::did_erase(pos, length);
}

void view::view_filter::will_replace(text::replacement const& what) {
  // Measured once when asked for, not with each of the calls that follow.
  view_.forget_max_columns();
  filter::will_replace(what);
}

void view::view_filter::refresh(text::pos const& first, text::pos const& last) {
  size_t const after =
      first.line == last.line ? first.line + size_t{1} : std::numeric_limits<uint32_t>::max();
  view_.refresh_lines(first.line, after);
}

void view::view_filter::park_caret() {
  // No mark may point past the end of a line that is changing; the editor sets the real
  // selection.
  view_.selection.set_caret(view_.begin(0));
}

}  // namespace text
