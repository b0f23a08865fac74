#include "actions/movement.h"
#include "actions/word_units.h"

namespace actions {
namespace {

bool is_upper(char32_t c) {
  return !is_not_u_char(c);
}

bool is_lower(char32_t c) {
  return !is_not_l_char(c);
}

bool is_caseless(char32_t c) {
  return !is_upper(c) && !is_lower(c);
}

text::view_iterator stepped_left(text::view_iterator it) {
  return --it;
}

/// Before the previous character, which is on the same line.
text::view_iterator before_one(text::view_iterator it) {
  text::unit_view const line = it.base.storage->line_units(it.base.line);
  it.base.column = static_cast<std::uint32_t>(text::previous_cluster(line, it.base.column));
  return it;
}

text::view_iterator stepped_right(text::view_iterator const& it) {
  text::view_iterator result(it.view, it.base);  // virtual columns are no steps of their own
  return ++result;
}

template <typename IsWord, typename IsNotWord>
text::view_iterator word_left(text::view_iterator const& it, IsWord is_word, IsNotWord is_not) {
  auto const start = it.view->begin(0);
  if (it == start) return it;
  if (is_word(character_before(it))) return search_backward(it, is_not);
  auto const before = stepped_left(it);
  if (before == start) return before;
  return is_word(character_before(before)) ? search_backward(before, is_not)
                                           : search_backward(before, is_word);
}

template <typename IsWord, typename IsNotWord>
text::view_iterator word_right(text::view_iterator const& it, IsWord is_word, IsNotWord is_not) {
  auto const end = it.view->end();
  if (it >= end) return it;
  if (is_word(character_at(it))) return search_forward(it, is_not);
  auto const next = stepped_right(it);
  if (next == end) return next;
  return is_word(character_at(next)) ? search_forward(next, is_not) : search_forward(next, is_word);
}

/// After the capitals from `it` on, less the last one if it begins a word of its own.
text::view_iterator after_capitals(text::view_iterator const& it) {
  auto result = search_forward(it, is_not_u_char);
  if (is_lower(character_at(result))) result = before_one(result);
  return result;
}

}  // namespace

text::view_iterator word_left(text::view_iterator const& it) {
  return word_left(it, is_word_char, is_not_word_char);
}

text::view_iterator word_right(text::view_iterator const& it) {
  return word_right(it, is_word_char, is_not_word_char);
}

text::view_iterator sub_word_left(text::view_iterator const& it) {
  auto const start = it.view->begin(0);
  if (it == start) return it;
  auto result = it;
  if (is_caseless(character_before(result))) {
    result = stepped_left(result);
    if (result == start) return result;
    if (!is_alternate_word_char(character_before(result)))
      return search_backward(result, is_alternate_word_char);
  }
  if (is_upper(character_before(result))) return search_backward(result, is_not_u_char);
  if (is_lower(character_before(result))) {
    result = search_backward(result, is_not_l_char);
    if (is_upper(character_before(result))) result = before_one(result);
  }
  return result;
}

text::view_iterator sub_word_right(text::view_iterator const& it) {
  auto const end = it.view->end();
  if (it >= end) return it;
  auto const next = stepped_right(it);
  if (next == end) return next;
  bool const steps = is_caseless(character_at(it));
  auto const from = steps ? next : it;
  if (steps && !is_alternate_word_char(character_at(from)))
    return search_forward(from, is_alternate_word_char);
  if (is_lower(character_at(from))) return search_forward(from, is_not_l_char);
  auto const after = steps ? stepped_right(from) : next;
  if (is_lower(character_at(after))) return search_forward(after, is_not_l_char);
  if (is_upper(character_at(from)) && is_upper(character_at(after))) return after_capitals(from);
  return next;  // after a single capital, or at a digit
}

}  // namespace actions
