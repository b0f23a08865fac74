#pragma once

#include "text/views/view_iterator.h"

#include <string>

namespace layout {

/// Characters without a cell of their own and controls of the direction in which text runs: with
/// them a text can be read otherwise than a program does. Not so joiners where a script or an emoji
/// needs them.

/// Whether such a character of the basic plane is at `at` < text.size().
bool is_hidden_character(std::u16string_view text, std::size_t at);

/// Code points and names of those that stand together at a position, a line for each; empty without
/// any.
std::u16string hidden_characters_at(text::view_iterator const& it);

}  // namespace layout
