#pragma once

#include "regex/match.h"
#include "regex/nfa.h"
#include "regex/visit_nfa.h"

/// Searching with the own engine, over any pair of bidirectional iterators on units of 8 or 16
/// bits.
///
///     static regex::nfa<char> const word_end("\\>|$");
///     if (auto m = regex::find(first, last, word_end)) use(m.begin(), m.end());
///
/// Patterns that come from users or bundles are not for this engine, which has no defence against a
/// bad pattern but to give up: after a number of steps in proportion to the text a search ends with
/// an answer that is false and says `gave_up()`.
///
/// Over reverse iterators the text is read backwards, and so is everything in the pattern: "ab"
/// finds the text "ba"; "^" and "\A" hold at the end of a line and of the text, "$" and "\z" at
/// the start; "\<" holds at the end of a word, "\>" at its start; look-ahead looks towards the
/// start of the text.
namespace regex {

namespace detail {

/// The next position from `it` on at which a match can begin; `no_more` set if there is none.
template <class Iterator>
Iterator skip_to_candidate(visit_nfa<Iterator> const& machine, Iterator it, bool& no_more) {
  first_units const& first = machine.pattern().first_units;
  Iterator const begin = machine.first(), end = machine.last();
  if (first.begins_at == first_units::place::text_start && it != begin) {
    no_more = true;
    return end;
  }
  if (first.begins_at == first_units::place::line_start && it != begin) {
    Iterator before = std::prev(it);
    while (to_unit(*before) != u'\n') {
      if (it == end) {
        no_more = true;
        return end;
      }
      before = it++;
    }
    return it;
  }
  if (first.may_be_empty) return it;
  while (it != end && !first.contain(*it)) ++it;
  no_more = it == end;
  return it;
}

/// The first match that begins at `start` or later. The text before `start` counts for look-behinds
/// and assertions: "^" does not hold where a search is only resumed.
template <class Iterator>
match<Iterator> search(visit_nfa<Iterator>& machine, Iterator start) {
  for (Iterator it = start;; ++it) {
    bool no_more = false;
    it = skip_to_candidate(machine, it, no_more);
    if (no_more) return {};
    if (machine.run(it)) break;
    if (machine.gave_up()) return match<Iterator>::broken_off();
    if (it == machine.last()) return {};
  }
  match<Iterator> found(machine.first(), machine.last());
  for (unsigned n = 0; n < machine.group_count(); ++n) {
    auto const& group = machine.group(n);
    if (!group.unset) found.insert(n, group.begin, group.end);
  }
  return found;
}

}  // namespace detail

/// The first match in [first, last). May end up looking at the text's end: "$" matches there.
template <class Iterator, class T>
match<Iterator> find(Iterator first, Iterator last, nfa<T> const& pattern,
                     limits const& allowed = {}) {
  visit_nfa<Iterator> machine(pattern.graph(), first, last, allowed);
  return detail::search(machine, first);
}

/// Applies `functor` to each match in turn, and gives it back. A search continues from the end of
/// the match before, one unit further if that was empty, and ends at `last`; what is spent is
/// counted for all of them together. When it gives up, the functor has seen the matches up to
/// there.
template <class Iterator, class T, class Functor>
Functor find_all(Iterator first, Iterator last, nfa<T> const& pattern, Functor functor,
                 limits const& allowed = {}) {
  visit_nfa<Iterator> machine(pattern.graph(), first, last, allowed);
  Iterator it = first;
  do {
    auto const found = detail::search(machine, it);
    if (!found) break;
    it = found.end();
    bool const step_on = found.begin() == it && it != last;
    functor(found);
    if (step_on) ++it;
  } while (it != last);
  return functor;
}

}  // namespace regex
