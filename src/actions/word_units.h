#pragma once

#include <algorithm>
#include <iterator>

#include "regex/traits.h"
#include "text/view.h"

/// What a unit is to the movements by words, and the searches in one line that they share.

inline bool is_word_char(text::char_t u) {
  return regex::traits<text::char_t>::is_word(u);
}
inline bool is_not_word_char(text::char_t u) {
  return !is_word_char(u);
}
/// As `is_word_char`, but for the underscore.
inline bool is_alternate_word_char(text::char_t u) {
  return u != '_' && is_word_char(u);
}
inline bool is_not_u_char(text::char_t u) {
  return !regex::traits<text::char_t>::is_upper(u);
}
inline bool is_not_l_char(text::char_t u) {
  return !regex::traits<text::char_t>::is_lower(u);
}

/// The unit in front of a position: a blank in virtual columns, `\n` at the start of a line.
inline text::char_t unit_before(text::view_iterator const& it) {
  if (it.offset != 0) return ' ';
  return it.base.column == 0 ? u'\n' : *(it.base - 1);
}

/// The first unit from `it` on for which the test holds, or the end of the line in the storage.
template <typename Test>
text::view_iterator search_forward(text::view_iterator const& it, Test test) {
  text::unit_view const line = it.base.storage->line_units(it.base.line);
  auto const found = std::find_if(line.begin() + it.base.column, line.end(), test);
  auto const column = static_cast<size_t>(found - line.begin());
  return {it.view, text::iterator(it.base.line, column, it.base.storage)};
}

/// The position behind the nearest unit before `it` for which the test holds, or the start of the
/// line in the storage.
template <typename Test>
text::view_iterator search_backward(text::view_iterator const& it, Test test) {
  text::unit_view const line = it.base.storage->line_units(it.base.line);
  auto const from = std::make_reverse_iterator(line.begin() + it.base.column);
  auto const column = static_cast<size_t>(line.rend() - std::find_if(from, line.rend(), test));
  return {it.view, text::iterator(it.base.line, column, it.base.storage)};
}
