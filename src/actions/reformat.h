#pragma once

#include <cstddef>
#include <string>

#include "text/char_types.h"

namespace actions {

/// The paragraphs of `text` as a line each: blanks at line ends go, a single line end becomes a
/// blank, and two or more become an empty line. Runs of blanks become one, but for those that the
/// text begins with. Line ends at the very start go; at the very end one stays.
std::u16string unwrapped(text::unit_view text);

struct reformat_options {
  std::size_t width = 0;  ///< of the rows, in columns, prefix included
  std::size_t tab_size = 1;
  bool justify = false;  ///< stretches all rows but the last of a paragraph to the width
  /// Takes the blanks, or the mark of a list with its blank, that the text begins with as the first
  /// row's prefix, and moves the other rows as far to the right.
  bool keep_prefix = true;
};

/// The paragraphs of `text` wrapped again.
std::u16string reformatted(text::unit_view text, reformat_options const& options);

}  // namespace actions
