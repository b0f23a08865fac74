#pragma once

#include "text/views/view.h"

#include <cstddef>
#include <utility>

namespace actions {

/// Actions that set the selection: it runs forward and is no rectangle. The caret stays where it
/// is. A selection that there was is widened to whole things of the kind.

/// The word that the caret touches, else the run of other units round it on its line. Of a
/// selection, the words in or at which its ends stand.
void select_word(text::view* view);
/// A row of the screen.
void select_line(text::view* view);
/// A line of the storage with its line end.
void select_hard_line(text::view* view);
/// The kinds of paragraphs are those of the movements.
void select_paragraph(text::view* view);
void select_soft_paragraph(text::view* view);
void select_all(text::view* view);

/// The first and the last line of the storage in which something is selected: a selection that ends
/// where a line begins doesn't reach into that line.
std::pair<std::size_t, std::size_t> selected_lines(text::view const& view);

}  // namespace actions
