#pragma once

#include "platform/unicode.h"
#include "regex/traits.h"
#include "text/cluster.h"
#include "text/views/view.h"

namespace actions {

/// What a character is to the movements by words, and the searches in one line that they share. A
/// cluster counts as its first code point; a lone surrogate belongs to no class.

inline bool is_word_char(char32_t c) {
  return c > 0xFFFF ? unicode::is_alnum(c)
                    : regex::traits<text::char_t>::is_word(static_cast<text::char_t>(c));
}
inline bool is_not_word_char(char32_t c) {
  return !is_word_char(c);
}
/// As `is_word_char`, but for the underscore.
inline bool is_alternate_word_char(char32_t c) {
  return c != U'_' && is_word_char(c);
}
inline bool is_not_u_char(char32_t c) {
  return c > 0xFFFF ? !unicode::is_upper(c)
                    : !regex::traits<text::char_t>::is_upper(static_cast<text::char_t>(c));
}
inline bool is_not_l_char(char32_t c) {
  return c > 0xFFFF ? !unicode::is_lower(c)
                    : !regex::traits<text::char_t>::is_lower(static_cast<text::char_t>(c));
}

/// The character at a position: a blank inside a tab, `\n` at the end of a line.
inline char32_t character_at(text::view_iterator const& it) {
  text::unit_view const line = it.base.storage->line_units(it.base.line);
  if (it.offset != 0 || it.base.column == line.size()) return *it;
  return unicode::code_point_at(line, it.base.column);
}

/// The character before a position: a blank in virtual columns, `\n` at the start of a line.
inline char32_t character_before(text::view_iterator const& it) {
  if (it.offset != 0) return U' ';
  if (it.base.column == 0) return U'\n';
  text::unit_view const line = it.base.storage->line_units(it.base.line);
  return unicode::code_point_at(line, text::previous_cluster(line, it.base.column));
}

/// The first character from `it` on for which the test holds, or the end of the line in the
/// storage.
template <typename Test>
text::view_iterator search_forward(text::view_iterator const& it, Test test) {
  text::unit_view const line = it.base.storage->line_units(it.base.line);
  size_t column = text::cluster_start_from(line, it.base.column);
  while (column < line.size() && !test(unicode::code_point_at(line, column)))
    column = unicode::cluster_at(line, column).end;
  return {it.view, text::iterator(it.base.line, column, it.base.storage)};
}

/// The position after the nearest character before `it` for which the test holds, or the start of
/// the line in the storage.
template <typename Test>
text::view_iterator search_backward(text::view_iterator const& it, Test test) {
  text::unit_view const line = it.base.storage->line_units(it.base.line);
  size_t column = text::cluster_start_from(line, it.base.column);
  // From one sure break to the next one back: some clusters are found only by a walk forward.
  for (size_t found = 0; found == 0 && column > 0;) {
    size_t const start = unicode::sure_break_before(line, column - 1);
    for (size_t at = start, end; at < column; at = end) {
      end = unicode::cluster_at(line, at).end;
      if (test(unicode::code_point_at(line, at))) found = end;
    }
    column = found != 0 ? found : start;
  }
  return {it.view, text::iterator(it.base.line, column, it.base.storage)};
}

}  // namespace actions
