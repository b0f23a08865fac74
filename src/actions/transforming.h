#pragma once

#include "text/views/view.h"

namespace actions {

/// Actions that rewrite the selected text as a whole, as one change, and leave the result selected.
/// With nothing selected they get what action_helpers.h has selected for them. What report a bool
/// give false, and change nothing, where they can't be done.

/// @name Paragraphs
/// Rows are as wide as the screen, or as the rectangle in column mode.
/// @{
void view_unwrap_text(text::view* view);
void view_reformat_text(text::view* view);
void view_reformat_text_and_justify(text::view* view);
/// @}

/// @name Lines
/// A selection that is no rectangle is widened to whole lines. The caret keeps its distance from
/// the end of its line.
/// @{
void view_shift_left(text::view* view);
void view_shift_right(text::view* view);
/// @}

void view_align_left(text::view* view);
void view_align_center(text::view* view);
void view_align_right(text::view* view);
void view_align_justified(text::view* view);

void view_change_tabs_to_spaces(text::view* view);
void view_change_spaces_to_tabs(text::view* view);

/// Lower case for upper case, and the reverse.
text::char_t toggle_case(text::char_t unit);
/// Words that the user default `WynWordsExcludedFromCapitalization` lists stay in lower case in the
/// middle of the text.
void view_capitalize_word(text::view* view);

/// Exchanges the characters on both sides of the caret, or of a selection the order of all; lines
/// where the text has more than one.
bool view_transpose(text::view* view);

/// Extend the selection from its first mark by a character, or to the end of the word.
void select_char(text::view* view);
void select_word_right(text::view* view);

}  // namespace actions
