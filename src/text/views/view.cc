#include "text/views/view.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "text/views/bookmark_filter.h"
#include "text/views/folding_filter.h"
#include "text/views/mark_history.h"
#include "text/views/soft_wrap_filter.h"
#include "text/views/view_filter.h"

namespace text {

unsigned long obtain_document_tag() {
  static unsigned long last = 0;
  return ++last;
}

view::view(text::storage& of)
    : storage(&of),
      mirror_observer(of, true),
      notify_observer(of, true),
      mark_history(std::make_unique<class view::mark_history>(*this)),
      storage_filter(std::make_unique<class view::storage_filter>(*this)),
      bookmark_filter(std::make_unique<class view::bookmark_filter>()),
      folding_filter(std::make_unique<class view::folding_filter>(*this)),
      soft_wrap_filter(std::make_unique<class view::soft_wrap_filter>(*this)),
      view_filter(std::make_unique<class view::view_filter>(*this)),
      long_lines_(of) {
  of.add_observer(&mirror_observer);
  of.add_observer(&notify_observer);
  filters[filter_index::storage] = storage_filter.get();
  filters[filter_index::bookmark] = bookmark_filter.get();
  filters[filter_index::folding] = folding_filter.get();
  filters[filter_index::view] = view_filter.get();
  chain_filters();
  selection.set_caret(begin(0));
  saved_selection = selection;
  view_filter->selections.store({1, 0}, selection);
}

view::~view() {
  set_snippet_observer(nullptr);
  storage->remove_observer(&notify_observer);
  storage->remove_observer(&mirror_observer);
}

size_t view::lines() const {
  return top().lines();
}
size_t view::size(unsigned long line) const {
  return top().size(line);
}
view_iterator view::begin(unsigned long line) const {
  return {this, top().begin(line)};
}
view_iterator view::end(unsigned long line) const {
  return {this, top().end(line)};
}

size_t view::line_in_view(view_iterator const& it) const {
  text::pos at = it.base.pos();
  for (auto const& [index, filter] : filters) at = filter->in_view(at);
  return at.line;
}

size_t view::column_in_view(view_iterator const& it) const {
  size_t const row = line_in_view(it);
  text::iterator start = begin(row).base;
  if (start.line != it.base.line) start = {it.base.line, 0, storage};
  size_t const indent = start.column == 0 ? 0 : indent_of_row(row);
  return indent + width_when_expanding_tabs(start, it.base, indent) + it.offset;
}

size_t view::indent_of_row(size_t row) const {
  return soft_wrap && wraps_indented ? soft_wrap_filter->indent_of_row(row) : 0;
}

bool view::is_whole_line(view_iterator const& first, view_iterator const& last) const {
  return first.base.column == 0 && last.base == storage->end(first.base.line);
}

unit_column view::unit_at_row_column(row_pos const& at) const {
  view_iterator const first = begin(at.row), last = end(at.row);
  if (is_whole_line(first, last))
    return long_lines_.unit_at({first.base.line, at.column}, tab_stops(tab_size));
  size_t const length = static_cast<size_t>(last.base - first.base);
  unit_view const units = storage->line_units(first.base.line).substr(first.base.column, length);
  return unit_at_column(units, indent_of_row(at.row), at.column, tab_stops(tab_size));
}

size_t view::width_when_expanding_tabs(text::iterator const& first, text::iterator const& last,
                                       size_t start) const {
  if (first.line == last.line && first.column == 0 && start == 0)
    return long_lines_.column(last.pos(), tab_stops(tab_size));
  size_t column = start;
  size_t from = first.column;
  for (size_t line = first.line; line < last.line; ++line, from = 0)
    column +=
        expanded_width(storage->line_units(line).substr(from), column, tab_stops(tab_size)) + 1;
  unit_view const units = storage->line_units(last.line).substr(from, last.column - from);
  return column + expanded_width(units, column, tab_stops(tab_size)) - start;
}

size_t view::row_width(size_t row) const {
  size_t const indent = indent_of_row(row);
  return indent + width_when_expanding_tabs(begin(row).base, end(row).base, indent);
}

size_t view::max_columns_for_range(size_t first, size_t last) const {
  size_t widest = 0;
  size_t const end_row = std::min(last, lines());
  if (soft_wrap) {
    for (size_t row = first; row < end_row; ++row) widest = std::max(widest, row_width(row));
    return widest;
  }
  // Where each row is a line there is no need to ask the filters for a million of them.
  folding_filter->visit_lines_of_rows(first, end_row, [&](size_t line, size_t after) {
    for (; line < after; ++line)
      widest = std::max(
          widest, width_when_expanding_tabs(storage->begin_of_line(line), storage->end(line)));
  });
  return widest;
}

void view::raise_max_columns(size_t width) const {
  max_columns = static_cast<unsigned>(std::max<size_t>(max_columns, width));
}

unsigned view::forget_max_columns() {
  grown_columns_ = unknown_columns;
  return std::exchange(max_columns, unknown_columns);
}

bool view::knows_max_columns() const {
  if (max_columns == unknown_columns) max_columns = std::exchange(grown_columns_, unknown_columns);
  return max_columns != unknown_columns;
}

size_t view::columns() const {
  if (soft_wrap) return screen_width;
  if (!knows_max_columns()) max_columns = static_cast<unsigned>(max_columns_for_range(0, lines()));
  return max_columns;
}

void view::refresh_lines(size_t first, size_t last) {
  first_refresh_line = std::min(first_refresh_line, static_cast<uint32_t>(first));
  last_refresh_line = std::max(last_refresh_line, static_cast<uint32_t>(last));
}

void view::set_tab_size(unsigned columns) {
  if (columns == tab_size) return;
  tab_size = columns;
  folding_filter->forget_markers();
  forget_max_columns();
  if (soft_wrap) soft_wrap_filter->reset();
}

bool view::follow_cell_widths() {
  bool const now = counts_units_as_cells();
  if (std::exchange(units_were_cells_, now) == now) return false;
  long_lines_.clear();
  forget_max_columns();
  if (soft_wrap) soft_wrap_filter->reset();
  return true;
}

void view::set_screen_width(unsigned columns) {
  if (columns == screen_width) return;
  screen_width = columns;
  if (soft_wrap) soft_wrap_filter->reset();
}

void view::set_soft_wrap(bool on) {
  if (on == soft_wrap) return;
  soft_wrap = on;
  if (on) forget_max_columns();
  switch_filter(filter_index::soft_wrap, soft_wrap_filter.get(), on);
}

void view::set_wraps_indented(bool on) {
  if (on == wraps_indented) return;
  wraps_indented = on;
  if (soft_wrap) soft_wrap_filter->reset();
}

void view::set_spellcheck_enabled(bool on) {
  if (on == spellcheck_enabled) return;
  spellcheck_enabled = on;
  switch_filter(filter_index::spellcheck, spellcheck_filter.get(), on);
}

void view::set_foldings_enabled(bool on) {
  if (on == foldings_enabled) return;
  foldings_enabled = on;
  forget_max_columns();
  switch_filter(filter_index::folding, folding_filter.get(), on);
  if (soft_wrap) soft_wrap_filter->reset();
  if (spellcheck_enabled && spellcheck_filter) spellcheck_filter->reset();
}

void view::chain_filters() {
  filter* below = nullptr;
  for (auto const& [index, filter] : filters) {
    filter->toward_storage = below;
    filter->toward_view = nullptr;
    if (below) below->toward_view = filter;
    below = filter;
  }
}

void view::switch_filter(filter_index index, switchable_filter* switched, bool on) {
  if (switched == nullptr) return;
  if (on)
    filters[index] = switched;
  else
    filters.erase(index);
  chain_filters();
  if (on)
    switched->reset();
  else
    switched->disable();
}

void view::enter(filter_index index, filter* added) {
  if (added)
    filters[index] = added;
  else
    filters.erase(index);
  chain_filters();
}

void view::install_tokenize_filter(std::unique_ptr<filter> added) {
  enter(filter_index::tokenize, added.get());
  tokenize_filter = std::move(added);
}

void view::install_spellcheck_filter(std::unique_ptr<switchable_filter> added) {
  enter(filter_index::spellcheck, spellcheck_enabled ? added.get() : nullptr);
  spellcheck_filter = std::move(added);
  if (spellcheck_enabled && spellcheck_filter) spellcheck_filter->reset();
}

void view::set_snippet_observer(std::unique_ptr<snippet_observer_t> observer) {
  if (snippet_observer) storage->remove_observer(snippet_observer.get());
  snippet_observer = std::move(observer);
  if (snippet_observer) storage->add_observer(snippet_observer.get());
}

void view::will_begin_action() {
  mirror_observer.will_begin_action();
  notify_observer.will_begin_action();
  mark_history->will_begin_action();
}

void view::did_end_action() {
  mirror_observer.did_end_action();
  notify_observer.did_end_action();
  mark_history->did_end_action();
}

bool view::is_visible(text::iterator const& it) const {
  return !foldings_enabled || folding_filter->is_visible(it.pos());
}

void view::make_visible(text::iterator const& it) {
  if (is_visible(it)) return;
  text::selection const kept = selection.without_text();
  folding_filter->make_visible(it.pos());
  selection = kept;
}

void view::show_selection() {
  for (auto const* mark : {&selection.current_mark, &selection.first_mark, &selection.last_mark})
    make_visible(mark->base);
}

bool view::make_lines_visible(size_t first, size_t last) {
  if (!foldings_enabled) return false;
  text::selection const kept = selection;
  bool const found = folding_filter->make_lines_visible(first, last);
  selection = kept;
  return found;
}

view_iterator view::in_view(text::iterator const& it, bool) {
  make_visible(it);
  return {this, it};
}

void view::set_bookmark(text::pos const& at, bool set) {
  bookmark_filter->set_bookmark(at, set);
}

void view::toggle_bookmark(text::pos const& at) {
  set_bookmark(at, !has_bookmark(at.line));
}

bool view::has_bookmark(size_t line) const {
  return bookmark_filter->has_bookmark(line);
}

text::pos view::next_bookmark(size_t line) const {
  return bookmark_filter->next_bookmark(line);
}

text::pos view::previous_bookmark(size_t line) const {
  return bookmark_filter->previous_bookmark(line);
}

}  // namespace text
