#pragma once

#include "text/views/view.h"

namespace actions {

/// Actions on the whole lines that the caret or the selection touches; see selected_lines(). They
/// report false, and change nothing, where they can't be done.

/// Move the lines past the one before or after them, with bookmarks and folds. The selection, also
/// one of parts of lines, goes along.
bool view_move_lines_up(text::view* view);
bool view_move_lines_down(text::view* view);

/// Move the selection to the row before or after it: a rectangle and parts of lines to the same
/// column there, whole lines past the next line.
bool view_move_selection_line_up(text::view* view);
bool view_move_selection_line_down(text::view* view);
/// By a column, or by a character outside column mode.
bool view_move_selection_column_left(text::view* view);
bool view_move_selection_column_right(text::view* view);

/// A copy of the selected text follows it, or of the line where nothing is selected; caret and
/// selection are in the copy.
void view_duplicate(text::view* view);
void view_delete_lines(text::view* view);
/// The lines, or the caret's and the next one, as one. False on the last line.
bool view_join_lines(text::view* view);

/// Of the selected lines, or of all when nothing or only part of a line is selected.
void view_sort_lines(text::view* view);
void view_unique_lines(text::view* view);
void view_reverse_lines(text::view* view);

}  // namespace actions
