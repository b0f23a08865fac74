#include "text/views/view_iterator.h"

#include <algorithm>

#include "text/cluster.h"
#include "text/views/view.h"

namespace text {

namespace {

constexpr char_t space = u' ';

bool keeps_remainder(text::view const& view, freehanded_t::type type) {
  return type == freehanded_t::on || (type == freehanded_t::automatic && view.freehanded_mode);
}

}  // namespace

view_iterator::reference view_iterator::operator*() const {
  return offset != 0 && *base == u'\t' ? space : *base;
}

view_iterator& view_iterator::operator++() {
  if (base == view->storage->end(-1)) return *this;
  size_t const row = view->line_in_view(*this);
  if (*this == view->end(row) && row + 1 < view->lines())
    base = view->begin(row + 1).base;
  else if (unit_view const line = view->storage->line_units(base.line); base.column < line.size())
    base.column = static_cast<uint32_t>(next_cluster(line, base.column));
  else
    ++base;
  offset = desired_column = 0;
  return *this;
}

view_iterator& view_iterator::operator--() {
  desired_column = 0;
  if (offset != 0) {
    offset = 0;
    return *this;
  }
  size_t const row = view->line_in_view(*this);
  if (*this != view->begin(row))
    base.column =
        static_cast<uint32_t>(previous_cluster(view->storage->line_units(base.line), base.column));
  else if (row != 0)
    base = view->end(row - 1).base;
  return *this;
}

size_t line_before_filters(view_iterator const& it) {
  return it.base.line;
}

size_t column_before_wrap(view_iterator const& it) {
  return it.view->long_lines().column(it.base.pos(), tab_stops(it.view->tab_size)) + it.offset;
}

view_iterator iter_from_hybrid_pos(text::view const* view, hybrid_pos const& at,
                                   freehanded_t::type type) {
  unit_column const found = view->long_lines().unit_at(at, tab_stops(view->tab_size));
  size_t const offset = keeps_remainder(*view, type) ? found.rest : 0;
  return {view, text::iterator(at.line, found.unit, view->storage), offset};
}

view_iterator iter_from_view_pos(text::view const* view, row_pos const& at,
                                 freehanded_t::type type) {
  size_t const row = std::min(at.row, view->lines() - 1);
  unit_column const found = view->unit_at_row_column({row, at.column});
  size_t const offset = keeps_remainder(*view, type) ? found.rest : 0;
  return {view, view->begin(row).base + static_cast<std::ptrdiff_t>(found.unit), offset, at.column};
}

text::iterator make_base_iter(view_iterator it) {
  if (it.offset == 0) return it.base;
  text::storage& storage = *it.view->storage;
  text::iterator const base = it.base;
  if (base.column == storage.size(base.line)) {
    storage.insert(base, it.offset, u' ');
  } else {
    storage.erase(base);
    storage.insert(base, it.view->tab_size, u' ');
  }
  return base + it.offset;
}

}  // namespace text
