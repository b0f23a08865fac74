#pragma once

#include <string>
#include <string_view>

#include "text/views/view.h"

/// Draws carets and selections inside the text of a test case, and reads such drawings. A drawing
/// is UTF-8; these characters are marks, so they can't be part of the text:
///
///     |     the caret
///     [ ]   where the selection began (`first_mark`) and where it ends (`last_mark`); one that
///           runs backward is drawn as ]text[
///     { }   the same for a selection in column mode
///     ·     (U+00B7) one virtual column: counts for the next mark, as in "ab··|" for a caret two
///           columns after the line's end, and "a·|\tb" for one a column inside the tab
///
/// Without `|` the caret is where the selection ends, and it isn't drawn when it is there.
namespace marked_text {

std::u16string units(std::string_view utf8);
std::string utf8(std::u16string_view units);

/// The text alone.
std::u16string units_of(text::storage const& storage);
std::string text_of(text::storage const& storage);

/// Replaces the whole text of the view and sets the selection as drawn.
void set(text::view& view, std::string_view drawing);

/// The text with its selection.
std::string get(text::view const& view);

}  // namespace marked_text
