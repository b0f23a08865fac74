#include "grammar/pattern_bracket.h"

#include <algorithm>

namespace grammar {

namespace {

void make_unknown(bracket_class& made) {
  made = {symbol_set::everything(), false, true};
}

bracket_class intersection(bracket_class a, bracket_class const& b) {
  a.set.remove(b.set.complement());
  a.exact &= b.exact;
  a.beyond_letters |= b.beyond_letters;
  return a;
}

void add_range(char16_t low, char16_t high, bracket_class& made) {
  made.set.add(low, std::min<unsigned>(high, 127));
  if (high >= 128) made.beyond_letters = true;
}

// After a class or a range a hyphen may mean itself or not.
void after_complete(pattern_cursor& in, bracket_class& made) {
  if (!in.next_is(u"-") || in.next_is(u"-]")) return;
  make_unknown(made);
}

bracket_class named_class(pattern_cursor& in) {
  bracket_class made;
  in.take(u":");
  in.take(u"^");
  while (!in.at_end() && is_ascii_letter(in.next())) ++in.at;
  // With anything else there it is a class in the class, or not.
  if (!in.take(u":]")) in.give_up();
  make_unknown(made);
  return made;
}

/// Reads what stands after a backslash: true for a unit, false for a class, which is added.
bool escaped_member(pattern_cursor& in, char16_t& unit, bracket_class& made) {
  char16_t const c = in.take();
  symbol_set set;
  if (class_after_backslash(c, set)) {
    made.set.add(set);
    made.beyond_letters = true;
    after_complete(in, made);
    return false;
  }
  if (c == u'b') {
    unit = u'\b';
    return true;
  }
  if (c == u'p' || c == u'P') {
    if (!in.skip_property()) in.give_up();
    make_unknown(made);
    return false;
  }
  if (!in.unit_after_backslash(c, unit)) in.give_up();
  return true;
}

void member(pattern_cursor& in, char16_t c, bracket_class& made) {
  char16_t low = c;
  if (c == u'\\' && !escaped_member(in, low, made)) return;
  if (!in.next_is(u"-") || in.next_is(u"-]")) return add_range(low, low, made);
  ++in.at;
  char16_t high = in.take();
  if (high == u'[' || (high == u'&' && in.next_is(u"&"))) {
    in.give_up();
  } else if (high == u'\\' && !escaped_member(in, high, made)) {
    add_range(low, low, made);
    add_range(u'-', u'-', made);
  } else {
    if (low > high) in.give_up();
    add_range(low, high, made);
    after_complete(in, made);
  }
}

}  // namespace

bracket_class read_bracket(pattern_cursor& in, int depth) {
  bracket_class made, all;
  bool const negated = in.take(u"^");
  bool is_first = true, intersected = false;
  if (depth > max_pattern_depth) in.give_up();
  for (;; is_first = false) {
    char16_t c = in.take();
    if (in.failed) return made;
    if (c == u']' && !is_first) break;
    if (c == u'&' && in.take(u"&")) {
      all = intersected ? intersection(all, made) : made;
      made = {};
      intersected = true;
    } else if (c == u'[') {
      bracket_class const inner = in.next_is(u":") ? named_class(in) : read_bracket(in, depth + 1);
      made.set.add(inner.set);
      made.exact &= inner.exact;
      made.beyond_letters = true;
    } else {
      member(in, c, made);
    }
  }
  if (intersected) made = intersection(all, made);
  if (!negated) return made;
  // The complement of more than there is would be too little.
  made.set = made.exact ? made.set.complement() : symbol_set::everything();
  made.set.has_end = false;
  return made;
}

}  // namespace grammar
