#pragma once

#include "text/char_types.h"

class WynTextView;

/// Typing brackets and quotes in pairs. What was inserted with an opening unit stays a live pair as
/// long as the caret is inside: its closing unit is typed over, and deleting the opening one takes
/// both away. The view must show a document, inside of a view_will_change scope.

/// Whether the unit at the caret closes a live pair; then that pair ends, and the unit is selected,
/// to be typed over.
bool select_live_closing(WynTextView& text_view, text::char_t typed);
/// Typed with a selection, an opening unit puts the pair round it: in columns round each row. False
/// if it opens none here.
bool surround_selection(WynTextView& text_view, text::char_t typed);
/// An opening unit that was typed gets its closing one, but not in front of a word.
void complete_pair(WynTextView& text_view, text::char_t typed);
/// With the caret in an empty live pair: ends it, and with `both` selects its two units.
void end_empty_pair(WynTextView& text_view, bool both);
