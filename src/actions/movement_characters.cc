#include "actions/movement.h"
#include "actions/word_units.h"

namespace actions {
namespace {

bool in_virtual_space(text::view const& view) {
  return view.freehanded_mode || view.selection.column_mode;
}

text::view_iterator aiming_nowhere(text::view_iterator it) {
  it.desired_column = 0;
  return it;
}

text::view_iterator left_in_virtual_space(text::view_iterator it) {
  if (it.offset != 0) {
    --it.offset;
    return it;
  }
  --it;
  if (*it.base == '\t') {
    size_t const tab_size = it.view->tab_size;
    it.offset = static_cast<uint32_t>(tab_size - column_before_wrap(it) % tab_size - 1);
  }
  return it;
}

text::view_iterator left_over_soft_tab(text::view_iterator it) {
  size_t const tab_size = it.view->tab_size, column = column_before_wrap(it);
  bool const at_stop = column != 0 && column % tab_size == 0 && character_before(it) == ' ';
  --it;
  for (size_t n = 1; at_stop && n < tab_size && character_before(it) == ' '; ++n) --it;
  return it;
}

text::view_iterator right_in_virtual_space(text::view_iterator it) {
  if (*it.base == '\t' && (column_before_wrap(it) + 1) % it.view->tab_size == 0)
    return {it.view, it.base + 1};
  ++it.offset;
  return it;
}

/// Whether spaces fill the next `width` columns of the line.
bool is_soft_tab(text::view_iterator const& it, size_t width) {
  text::unit_view const line = it.base.storage->line_units(it.base.line);
  text::unit_view const ahead = line.substr(it.base.column, width);
  return ahead.size() == width && ahead.find_first_not_of(u' ') == ahead.npos &&
         text::is_cluster_start(line, it.base.column + width);
}

}  // namespace

text::view_iterator left(text::view_iterator const& it) {
  text::view const& view = *it.view;
  if (it == view.begin(0)) return it;
  if (in_virtual_space(view)) return aiming_nowhere(left_in_virtual_space(it));
  if (it.offset != 0) return {it.view, it.base};
  if (view.treats_spaces_as_tabs) return left_over_soft_tab(it);
  auto result = it;
  return --result;
}

text::view_iterator right(text::view_iterator const& it) {
  text::view const& view = *it.view;
  if (in_virtual_space(view)) {
    // Reading at the document's end gives a line end, too.
    if (*it.base == '\t' || *it.base == '\n') return aiming_nowhere(right_in_virtual_space(it));
  } else if (view.treats_spaces_as_tabs) {
    size_t const width = view.tab_size - column_before_wrap(it) % view.tab_size;
    if (is_soft_tab(it, width)) return {it.view, it.base + static_cast<std::ptrdiff_t>(width)};
  }
  auto result = it;
  if (it < view.end()) ++result;
  return aiming_nowhere(result);
}

}  // namespace actions
