#pragma once

#include "actions/movement.h"
#include "text/views/view.h"

namespace actions {

/// What moves, extends or erases the selection by a movement function. All ask for the caret to be
/// kept in sight. The result is false when nothing came of it.

/// A selection first collapses to its end in the direction of the move, and is left at that when
/// `f` is `right` or `left`.
bool move_forward_action(text::view* view, movement_function f);
bool move_backward_action(text::view* view, movement_function f);

/// The caret goes where `f` leads, and the selection's last mark with it. A caret that is neither
/// end of the selection is put at its end in the direction of the move before.
bool select_forward_action(text::view* view, movement_function f);
bool select_backward_action(text::view* view, movement_function f);

/// Selects what lies between the caret and where `f` leads. Folds in between are unfolded first, so
/// that a deletion takes no more than it would without them.
void select_for_deletion(text::view* view, movement_function f);

/// Erases the selection, or without one what lies between the caret and where `f` leads.
bool delete_action(text::view* view, movement_function f);

/// @name Steps of the caret
/// Left and right collapse a selection of which the caret is an end, and continue from a caret
/// inside it. Up and down leave a selection of several lines from its first and its last row.
/// @{
bool move_left(text::view* view);
bool move_right(text::view* view);
bool move_up(text::view* view);
bool move_down(text::view* view);
/// @}

}  // namespace actions
