#pragma once

#include "text/views/view.h"

namespace actions {

/// Where the caret goes: functions from a position of a view to another one. They know nothing of
/// selections and change nothing. Steps go through the rows of the view, so text that is folded
/// away is passed over; searches scan the line in the storage and don't look beyond it. Unless
/// stated otherwise the result aims at no column.

using movement_function = text::view_iterator (*)(text::view_iterator const&);

/// @name Characters
/// Steps are grapheme clusters (text/cluster.h). In freehanded mode and in column mode the caret
/// walks through tabs and past the line's end column by column. Otherwise, where spaces stand for
/// tabs, a whole soft tab is one step. The two ends of the document stop the caret.
/// @{
text::view_iterator left(text::view_iterator const& it);
text::view_iterator right(text::view_iterator const& it);
/// @}

/// @name Rows
/// The first two aim at `desired_column`, or at the present column without one, and hand it on.
/// From the first and the last row they lead to the document's end.
/// @{
text::view_iterator up(text::view_iterator const& it);
text::view_iterator down(text::view_iterator const& it);
text::view_iterator to_beginning_of_line(text::view_iterator const& it);
text::view_iterator to_end_of_line(text::view_iterator const& it);
/// After the blanks that the line begins with; from there to the line's beginning. In a row that
/// continues a line first to the beginning of the row.
text::view_iterator to_text_or_beginning_of_line(text::view_iterator const& it);
text::view_iterator to_beginning_of_document(text::view_iterator const& it);
text::view_iterator to_end_of_document(text::view_iterator const& it);
/// @}

/// @name Words, and the parts of words in camelCase and snake_case
/// @{
text::view_iterator word_left(text::view_iterator const& it);
text::view_iterator word_right(text::view_iterator const& it);
text::view_iterator sub_word_left(text::view_iterator const& it);
text::view_iterator sub_word_right(text::view_iterator const& it);
/// @}

/// @name Columns
/// The first and last line of the block of lines in which a word starts at the visual column of the
/// caret's word; from the edge of a block, the next block. The caret keeps its column.
/// @{
text::view_iterator to_beginning_of_column(text::view_iterator const& it);
text::view_iterator to_end_of_column(text::view_iterator const& it);
/// @}

/// @name Paragraphs
/// A hard paragraph is a line of the storage; a plain one is a run of lines without an empty line;
/// a soft one is the former where lines are wrapped, and the latter otherwise. Only soft ones are
/// left, for the paragraph before or after, from the edge.
/// @{
text::view_iterator to_beginning_of_hard_paragraph(text::view_iterator const& it);
text::view_iterator to_end_of_hard_paragraph(text::view_iterator const& it);
text::view_iterator to_beginning_of_paragraph(text::view_iterator const& it);
/// On the empty line after the paragraph, or the document's end.
text::view_iterator to_end_of_paragraph(text::view_iterator const& it);
text::view_iterator to_beginning_of_soft_paragraph(text::view_iterator const& it);
/// Without wrapping, after that empty line.
text::view_iterator to_end_of_soft_paragraph(text::view_iterator const& it);
/// @}

}  // namespace actions
