#include "actions/selecting.h"

#include "actions/movement.h"
#include "actions/word_units.h"

namespace actions {
namespace {

text::view_iterator line_start(text::view* view, size_t line) {
  return {view, text::iterator(line, 0, view->storage)};
}

void select_gap(text::view* view) {
  auto const caret = view->selection.first();
  view->selection.select(search_backward(caret, is_word_char), search_forward(caret, is_word_char),
                         false);
}

}  // namespace

void select_word(text::view* view) {
  auto first = view->selection.first(), last = view->selection.last();
  bool const before = is_word_char(character_before(first)),
             after = is_word_char(character_at(last));
  if (!view->has_selection() && !before && !after) return select_gap(view);
  if (before) first = search_backward(first, is_not_word_char);
  if (after) last = search_forward(last, is_not_word_char);
  view->selection.select(first, last, false);
}

void select_line(text::view* view) {
  auto const first = to_beginning_of_line(view->selection.first());
  auto last = view->selection.last();
  size_t const row = view->line_in_view(last);
  bool const is_whole = view->has_selection() && last == view->begin(row);
  if (!is_whole) last = row + 1 < view->lines() ? view->begin(row + 1) : view->end(row);
  view->selection.select(first, last, false);
}

void select_hard_line(text::view* view) {
  auto const first = line_start(view, view->selection.first().base.line);
  auto last = view->selection.last();
  size_t const line = last.base.line;
  bool const is_whole = last == line_start(view, line) && line > first.base.line;
  if (!is_whole)
    last = line + 1 < view->storage->lines() ? line_start(view, line + 1)
                                             : to_end_of_hard_paragraph(last);
  view->selection.select(first, last, false);
}

void select_paragraph(text::view* view) {
  auto const first = line_start(view, view->selection.first().base.line);
  auto const last = line_start(view, view->selection.last().base.line);
  view->selection.select(to_beginning_of_paragraph(first), to_end_of_paragraph(last), false);
}

void select_soft_paragraph(text::view* view) {
  auto first = line_start(view, view->selection.first().base.line);
  auto last = line_start(view, view->selection.last().base.line);
  // A wrapped line is a paragraph by itself, which the movements would leave from its edge.
  if (!view->soft_wrap) first = to_beginning_of_soft_paragraph(first);
  last = view->soft_wrap ? to_end_of_hard_paragraph(last) : to_end_of_soft_paragraph(last);
  view->selection.select(first, last, false);
}

void select_all(text::view* view) {
  view->selection.select(line_start(view, 0), {view, view->storage->end(-1)}, false);
}

std::pair<std::size_t, std::size_t> selected_lines(text::view const& view) {
  text::iterator const first = view.selection.first().base, last = view.selection.last().base;
  bool const ends_before = last.column == 0 && first.line < last.line;
  return {first.line, last.line - (ends_before ? 1 : 0)};
}

}  // namespace actions
