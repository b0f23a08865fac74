#pragma once

#include <optional>

#include "text/storage.h"

namespace conventions {

/// What is known of how a text is indented. Each member may be missing.
struct indentation {
  std::optional<bool> soft_tabs;        ///< whether by blanks
  std::optional<unsigned> indent_size;  ///< columns of a level
  std::optional<unsigned> tab_width;    ///< columns of a tab

  /// The columns of a tab stop in a document that has only one width for both.
  std::optional<unsigned> width(bool soft) const {
    return soft && indent_size ? indent_size : tab_width ? tab_width : indent_size;
  }
  friend bool operator==(indentation const&, indentation const&) = default;
};

/// How the lines of a text are indented: by tabs or by blanks, and then by how many, from 1 to 8.
/// What most lines don't agree on is missing; the width of a tab always is. Looks at the beginnings
/// of the first `most_lines_looked_at` lines, and at the last units of lines before indented ones.
///
/// Lines that begin with tabs speak for tabs, others with blanks, where one kind is four times as
/// frequent as the other. The steps to lines that are indented more than the previous one, blank
/// lines apart, then vote for a width. Not counted are the text of a block comment, labels such as
/// "public:" that are indented by an odd number of blanks, and steps after a comma: those lines are
/// aligned.
indentation detect_indentation(text::storage const& text);

inline constexpr std::size_t most_lines_looked_at = 20000;
inline constexpr std::size_t deepest_indent = 200;  ///< units; lines with more don't count
inline constexpr unsigned widest_step = 8;          ///< columns

}  // namespace conventions
