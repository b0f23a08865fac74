#include "actions/movement_wrappers.h"

#include <algorithm>

namespace actions {
namespace {

/// Whether the selection changed.
bool place_caret(text::view* view, text::view_iterator const& to) {
  bool const had_selection = view->has_selection();
  bool const moves = to != view->selection.current_mark;
  view->selection.set_caret(to);
  view->scroll_caret_pending = true;
  return moves || had_selection;
}

/// Moves on from the end to which the selection collapses, unless `f` is the plain step.
bool collapse_and_move(text::view* view, text::view_iterator end, movement_function f,
                       movement_function plain_step) {
  bool const only_collapses = f == plain_step;
  return place_caret(view, only_collapses ? end : f(end));
}

/// Extends the selection to where `f` leads. A caret inside it goes to `caret` first.
bool extend(text::view* view, movement_function f, text::view_iterator anchor,
            text::view_iterator caret) {
  text::selection& selection = view->selection;
  bool const column_mode = selection.column_mode;
  bool const was_inside = selection.current_mark != anchor && selection.current_mark != caret;
  if (was_inside) {
    selection.set_caret(anchor);
    selection.select_to(caret, column_mode);
  }
  auto const from = selection.current_mark, to = f(from);
  selection.select_to(to, column_mode);
  view->scroll_caret_pending = true;
  return was_inside || to != from;
}

bool is_one_line(text::selection const& selection) {
  return selection.first_mark.base.line == selection.last_mark.base.line;
}

/// Whether anything was hidden between the two.
bool unfold_between(text::view* view, text::iterator const& a, text::iterator const& b) {
  auto const [first, last] = std::minmax(a, b);
  return view->make_lines_visible(first.line, last.line);
}

bool step_or_collapse(text::view* view, movement_function f, text::view_iterator collapsed) {
  text::selection const& selection = view->selection;
  auto const caret = selection.current_mark;
  bool const is_end = caret == selection.first_mark || caret == selection.last_mark;
  return place_caret(view, view->has_selection() && is_end ? collapsed : f(caret));
}

}  // namespace

bool move_forward_action(text::view* view, movement_function f) {
  if (view->has_selection()) return collapse_and_move(view, view->selection.last(), f, right);
  return place_caret(view, f(view->selection.current_mark));
}

bool move_backward_action(text::view* view, movement_function f) {
  if (view->has_selection()) return collapse_and_move(view, view->selection.first(), f, left);
  return place_caret(view, f(view->selection.current_mark));
}

bool select_forward_action(text::view* view, movement_function f) {
  return extend(view, f, view->selection.first(), view->selection.last());
}

bool select_backward_action(text::view* view, movement_function f) {
  return extend(view, f, view->selection.last(), view->selection.first());
}

void select_for_deletion(text::view* view, movement_function f) {
  auto const caret = view->selection.current_mark;
  auto target = f(caret);
  if (unfold_between(view, caret.base, target.base)) target = f(caret);
  view->selection.select_to(target, false);
}

bool delete_action(text::view* view, movement_function f) {
  if (!view->has_selection()) select_for_deletion(view, f);
  bool const erases = view->has_selection();
  view->erase_selection();
  view->scroll_caret_pending = true;
  return erases;
}

bool move_left(text::view* view) {
  return step_or_collapse(view, left, view->selection.first());
}

bool move_right(text::view* view) {
  return step_or_collapse(view, right, view->selection.last());
}

bool move_up(text::view* view) {
  text::selection const& selection = view->selection;
  bool const one_line = is_one_line(selection);
  return place_caret(view, up(one_line ? selection.current_mark : selection.first()));
}

bool move_down(text::view* view) {
  text::selection const& selection = view->selection;
  if (is_one_line(selection)) return place_caret(view, down(selection.current_mark));
  auto const last = selection.last();
  bool const is_line_start = last.base.column == 0 && last.offset == 0;
  return place_caret(view, is_line_start ? last : down(last));
}

}  // namespace actions
