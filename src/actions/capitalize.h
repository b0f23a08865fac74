#pragma once

#include <functional>
#include <string>

#include "text/char_types.h"

namespace actions {

/// The text with each word's first letter in upper case and the rest in lower case. Words are runs
/// of letters, apostrophes and hyphens. One that `stays_lower` knows (it is asked in lower case) is
/// written in lower case, unless it is the first word or ends the text, blanks and line ends aside.
std::u16string capitalized(text::unit_view text,
                           std::function<bool(std::u16string const&)> const& stays_lower);

}  // namespace actions
