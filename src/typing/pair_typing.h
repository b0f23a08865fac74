#pragma once

#include <optional>

#include "styles/typing_pairs.h"
#include "text/char_types.h"

namespace typing {
class typed_view;

/// Typing brackets and quotes in pairs. What was inserted with an opening unit stays a live pair as
/// long as the caret is inside, and gives way to what is typed: who types on as if there were no
/// pairs gets just what was typed. Deleting the opening unit of an empty pair takes both away. The
/// view must show a document, inside of a view_will_change scope.

/// Whether a typed unit closes a live pair; then that pair ends, and its closing unit is selected,
/// to be typed over. That unit may stand after blanks and line ends, which are taken away, and a
/// closing quote after closing brackets of pairs inside, which were none then.
bool select_live_closing(typed_view& text_view, text::char_t typed);
/// Typed with a selection, an opening unit puts the pair round it: in columns round each row. False
/// if it opens none here.
bool surround_selection(typed_view& text_view, text::char_t typed);
/// The pair that a unit opens if it is typed at the caret, by what stands before it: a quote opens
/// none after a word, other than a prefix of strings, and nothing does after a backslash.
std::optional<styles::unit_pair> opened_pair(typed_view& text_view, text::char_t typed);
/// The opening unit that was typed gets its closing one, but not before a word, nor a
/// brace before other text.
void complete_pair(typed_view& text_view, styles::unit_pair pair);
/// With the caret in an empty live pair: ends it, and with `both` selects its two units.
void end_empty_pair(typed_view& text_view, bool both);
/// Ends the live pairs, right at the caret, of which the language says that their line is all they
/// are for, and takes their closing units away.
void end_pairs_of_line(typed_view& text_view);
/// Whether the caret stands at its line's end, but for closing units of live pairs.
bool is_at_end_of_typed(typed_view& text_view);

}  // namespace typing
