#include "text/views/selection.h"

#include "text/views/box.h"
#include "text/views/view.h"

namespace text {

void selection::select(view_iterator first, view_iterator last, bool columns) {
  first_mark = first;
  last_mark = last;
  column_mode = columns;
  data.clear();
}

void selection::select_to(view_iterator const& it, bool columns) {
  current_mark = it;
  select(first_mark, current_mark, columns);
}

void selection::set_caret(view_iterator const& it) {
  current_mark = it;
  select(current_mark, current_mark, false);
}

view_iterator const& selection::first() const {
  return last_mark < first_mark ? last_mark : first_mark;
}

view_iterator const& selection::last() const {
  return first_mark < last_mark ? last_mark : first_mark;
}

size_t selection::width() const {
  if (empty() || !column_mode) return first_mark.view->screen_width;
  text::box const extent(*this);
  return extent.last_column - extent.first_column;
}

std::vector<char_t>::const_iterator selection::begin() const {
  copy_data();
  return data.begin();
}

std::vector<char_t>::const_iterator selection::end() const {
  copy_data();
  return data.end();
}

unit_view selection::units() const {
  copy_data();
  return {data.data(), data.size()};
}

selection selection::without_text() const {
  selection kept;
  kept.first_mark = first_mark;
  kept.last_mark = last_mark;
  kept.current_mark = current_mark;
  kept.column_mode = column_mode;
  return kept;
}

bool selection::operator==(selection const& other) const {
  return first_mark == other.first_mark && last_mark == other.last_mark &&
         current_mark == other.current_mark && column_mode == other.column_mode;
}

void selection::copy_data() const {
  if (!data.empty() || empty()) return;
  if (column_mode)
    copy_columns();
  else
    copy_range();
}

void selection::copy_part(view_iterator from, size_t column, view_iterator const& to) const {
  if (from.offset != 0 && *from.base == u'\t') {
    size_t const cut_tab = tab_width(column, tab_stops(from.view->tab_size));
    data.insert(data.end(), cut_tab, u' ');
    ++from.base;
  }
  append_units(from.base, to.base, data);
}

void selection::copy_columns() const {
  text::view const* view = first_mark.view;
  text::box const extent(*this);
  for (size_t line = extent.first_line; line < extent.last_line; ++line) {
    auto const left =
        iter_from_hybrid_pos(view, {line, extent.first_column}, freehanded_t::automatic);
    auto const right =
        iter_from_hybrid_pos(view, {line, extent.last_column}, freehanded_t::automatic);
    // Columns past a line's end are not copied as blanks.
    bool const past_end = *right.base == u'\n';
    if (left.base == right.base) {
      if (!past_end) data.insert(data.end(), right.offset - left.offset, u' ');
    } else {
      copy_part(left, extent.first_column, right);
      if (!past_end) data.insert(data.end(), right.offset, u' ');
    }
    data.push_back(u'\n');
  }
}

void selection::copy_range() const {
  view_iterator const& from = first();
  view_iterator const& to = last();
  if (from.base == to.base) {
    data.push_back(u' ');
  } else {
    copy_part(from, from.offset != 0 ? column_before_wrap(from) : 0, to);
    data.insert(data.end(), to.offset, u' ');
  }
}

}  // namespace text
