#pragma once

#include <cstddef>
#include <string>

#include "text/char_types.h"

namespace actions {

/// The lines of `text` one level further to the left or right. `tab_size` is not 0.
///
/// A level is a tab or, with `soft_tabs`, as many spaces. With tabs, a comment marker in the first
/// columns keeps its place: the tab after it goes or comes. Lines of blanks alone aren't moved to
/// the right.
std::u16string shifted_left(text::unit_view text, std::size_t tab_size, bool soft_tabs);
std::u16string shifted_right(text::unit_view text, std::size_t tab_size, bool soft_tabs);

}  // namespace actions
