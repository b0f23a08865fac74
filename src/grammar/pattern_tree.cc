#include "grammar/pattern_tree.h"

#include <algorithm>
#include <utility>

#include "grammar/pattern_bracket.h"
#include "grammar/pattern_cursor.h"

namespace grammar {

symbol_set pattern_tree::first(bool& complete) const {
  complete = false;
  symbol_set made;
  switch (kind) {
    case type::units:
    case type::before:
      complete = true;
      return set;
    case type::any_text:
      return symbol_set::everything();
    case type::sequence:
      for (auto part = parts.begin(); part != parts.end() && !complete; ++part)
        made.add(part->first(complete));
      return made;
    case type::alternatives:
      complete = true;
      for (pattern_tree const& part : parts) {
        bool is_complete;
        made.add(part.first(is_complete));
        complete &= is_complete;
      }
      return made;
    case type::repeat:
      made = parts[0].first(complete);
      complete &= least > 0;
      return made;
    case type::look_ahead:
      return parts[0].first(complete);
    default:
      return made;
  }
}

namespace {

using type = pattern_tree::type;

constexpr int max_quantifiers = 10;  // in a row

pattern_tree node(type kind) {
  pattern_tree made;
  made.kind = kind;
  return made;
}

pattern_tree units(symbol_set const& set, bool exact) {
  pattern_tree made = node(type::units);
  made.set = set;
  made.exact = exact;
  return made;
}

pattern_tree after(symbol_set const& set) {
  pattern_tree made = node(type::after);
  made.set = set;
  return made;
}

pattern_tree before(symbol_set const& set) {
  pattern_tree made = node(type::before);
  made.set = set;
  return made;
}

void add_other_case(symbol_set& set) {
  constexpr std::uint64_t letters = 0x07fffffe;
  std::uint64_t const upper = set.ascii[1] & letters, lower = set.ascii[1] >> 32 & letters;
  set.ascii[1] |= upper << 32 | lower;
  set.has_other = true;  // there is a K for kelvin, and ligatures
}

class reader : private pattern_cursor {
 public:
  explicit reader(std::u16string_view source) : pattern_cursor(source) {}

  std::optional<pattern_tree> read() {
    pattern_tree made = alternatives({}, 0);
    if (failed || at < source.size()) return std::nullopt;
    return made;
  }

 private:
  struct options {
    bool ignore_case = false, extended = false, dot_all = false;
  };

  pattern_tree fail() {
    give_up();
    return {};
  }

  pattern_tree alternatives(options how, int depth) {
    if (depth > max_pattern_depth) return fail();
    pattern_tree made = node(type::alternatives);
    do made.parts.push_back(sequence(how, depth));
    while (take(u"|"));
    return made.parts.size() == 1 ? std::move(made.parts[0]) : made;
  }

  pattern_tree sequence(options how, int depth) {
    pattern_tree made;
    for (;;) {
      skip_remarks(how);
      if (at_end() || next() == u'|' || next() == u')') break;
      pattern_tree part = atom(how, depth);
      for (int i = 0; quantifier(part, how); ++i)
        if (i == max_quantifiers) return fail();
      made.parts.push_back(std::move(part));
    }
    return made.parts.size() == 1 ? std::move(made.parts[0]) : made;
  }

  /// Goes on to what has a meaning. A quantifier belongs to what stands before a remark.
  void skip_remarks(options how) {
    do {
      if (how.extended) skip_blank();
    } while (skip_comment());
  }

  bool skip_comment() {
    if (!take(u"(?#")) return false;
    while (!at_end() && !next_is(u")"))
      if (take() == u'\\') take();
    if (!take(u")")) fail();
    return true;
  }

  void skip_blank() {
    for (; !at_end(); ++at) {
      if (next() == u'#')
        at = std::min(source.find(u'\n', at), source.size() - 1);
      else if (std::u16string_view(u" \t\n\v\f\r").find(next()) == source.npos)
        break;
    }
  }

  bool quantifier(pattern_tree& part, options how) {
    skip_remarks(how);
    unsigned least = 0, most = pattern_tree::unlimited;
    if (take(u"*")) {
    } else if (take(u"+")) {
      least = 1;
    } else if (take(u"?")) {
      most = 1;
    } else if (next_is(u"{")) {
      if (!interval(least, most)) return false;
      bool const greedy = !take(u"?");
      // After a fixed number it is a quantifier of its own.
      if (!greedy) least = 0;
      return wrap(part, least, most, greedy);
    } else {
      return false;
    }
    bool const greedy = !next_is(u"?") && !next_is(u"+");
    if (!greedy) ++at;
    return wrap(part, least, most, greedy);
  }

  static bool wrap(pattern_tree& part, unsigned least, unsigned most, bool greedy) {
    pattern_tree made = node(type::repeat);
    made.least = least;
    made.most = most;
    made.greedy = greedy;
    made.parts.push_back(std::move(part));
    part = std::move(made);
    return true;
  }

  bool number(unsigned& value) {
    std::size_t const begin = at;
    for (value = 0; !at_end() && next() >= u'0' && next() <= u'9'; ++at)
      value = std::min(value * 10 + (next() - u'0'), 100000u);
    return at > begin;
  }

  bool interval(unsigned& least, unsigned& most) {
    std::size_t const begin = at++;
    bool const has_least = number(least);
    bool has_most = has_least;
    most = least;
    if (take(u",")) {
      has_most = number(most);
      if (!has_most) most = pattern_tree::unlimited;
    }
    if ((has_least || has_most) && take(u"}")) {
      if (least > most) failed = true;
      return true;
    }
    at = begin;
    return false;
  }

  pattern_tree atom(options how, int depth) {
    char16_t const c = take();
    switch (c) {
      case u'.': {
        symbol_set set = symbol_set::everything();
        if (!how.dot_all) set.remove(symbol_set::of("\n"));
        return units(set, true);
      }
      case u'^':
        return node(type::line_begin);
      case u'$':
        return line_end();
      case u'[':
        return bracket(how);
      case u'(':
        return group(how, depth);
      case u'\\':
        return escape(how);
      case u'*':
      case u'+':
      case u'?':
        return fail();
      case u'{': {
        unsigned least, most;
        --at;
        if (interval(least, most)) return fail();
        ++at;
        return literal(c, how);
      }
      default:
        return literal(c, how);
    }
  }

  static pattern_tree line_end() {
    symbol_set set = symbol_set::of("\n");
    set.has_end = true;
    return before(set);
  }

  static pattern_tree literal(char16_t c, options how) {
    symbol_set set;
    if (c >= 128) {
      if (how.ignore_case) return node(type::any_text);
      set.has_other = true;
      return units(set, false);
    }
    set.add(c);
    if (!how.ignore_case || !is_ascii_letter(c)) return units(set, true);
    add_other_case(set);
    return units(set, false);
  }

  pattern_tree group(options how, int depth) {
    auto const close = [this](pattern_tree part) {
      if (!take(u")")) return fail();
      return part;
    };
    if (!take(u"?")) {
      // What else begins with an asterisk is no group.
      if (next_is(u"*")) return fail();
      return close(alternatives(how, depth + 1));
    }
    if (take(u":")) return close(alternatives(how, depth + 1));
    if (take(u">")) {
      pattern_tree made = close(alternatives(how, depth + 1));
      wrap(made, 1, 1, false);
      return made;
    }
    if (take(u"=")) {
      pattern_tree made = node(type::look_ahead);
      made.parts.push_back(alternatives(how, depth + 1));
      return close(std::move(made));
    }
    if (take(u"!")) return not_ahead(close(alternatives(how, depth + 1)));
    if (take(u"<=")) return look_behind(close(alternatives(how, depth + 1)));
    if (take(u"<!")) return not_look_behind(close(alternatives(how, depth + 1)));
    if (take(u"<")) return named(u'>', how, depth);
    if (take(u"'")) return named(u'\'', how, depth);
    return option_group(how, depth);
  }

  pattern_tree named(char16_t closing, options how, int depth) {
    while (char16_t const c = take())
      if (c == closing) break;
    pattern_tree made = alternatives(how, depth + 1);
    return take(u")") ? made : fail();
  }

  pattern_tree option_group(options how, int depth) {
    for (bool on = true;;) {
      switch (take()) {
        case u'i':
          how.ignore_case = on;
          break;
        case u'x':
          how.extended = on;
          break;
        case u'm':
          how.dot_all = on;
          break;
        case u'-':
          on = false;
          break;
        case u':': {
          pattern_tree made = alternatives(how, depth + 1);
          return take(u")") ? made : fail();
        }
        // For all that follows in the group around, alternatives too.
        case u')':
          return alternatives(how, depth + 1);
        default:
          return fail();
      }
    }
  }

  static pattern_tree not_ahead(pattern_tree const& part) {
    if (part.kind != type::units || !part.exact) return node(type::assertion);
    symbol_set set = part.set.complement();
    set.has_other = set.has_end = true;
    return before(set);
  }

  static pattern_tree look_behind(pattern_tree const& part) {
    if (part.kind != type::units) return node(type::assertion);
    return after(part.set);
  }

  static pattern_tree not_look_behind(pattern_tree const& part) {
    if (part.kind != type::units || !part.exact) return node(type::assertion);
    symbol_set set = part.set.complement();
    set.has_other = set.has_end = true;
    return after(set);
  }

  bool skip_name() {
    char16_t const closing = take(u"<") ? u'>' : take(u"'") ? u'\'' : u'\0';
    if (closing == 0) return false;
    while (char16_t const c = take())
      if (c == closing) return true;
    return false;
  }

  pattern_tree escape(options how) {
    char16_t const c = take();
    symbol_set set;
    if (class_after_backslash(c, set)) return units(set, true);
    switch (c) {
      case u'b':
        return node(type::word_boundary);
      case u'B':
        return node(type::not_word_boundary);
      case u'A':
        return node(type::line_begin);
      case u'Z':
        return line_end();
      case u'z':
        set.has_end = true;
        return before(set);
      case u'k':
      case u'g':
        return skip_name() ? node(type::any_text) : fail();
      case u'p':
      case u'P':
        if (!skip_property()) return fail();
        return how.ignore_case ? node(type::any_text) : units(symbol_set::everything(), false);
      case u'N':
      case u'O':
        return units(symbol_set::everything(), false);
      case u'R':
      case u'X':
        return node(type::any_text);
      case u'y':
      case u'Y':
        return node(type::assertion);
      default:
        break;
    }
    if (c >= u'1' && c <= u'9') {
      if (!at_end() && next() >= u'0' && next() <= u'9') return fail();
      return node(type::any_text);
    }
    char16_t unit;
    return unit_after_backslash(c, unit) ? literal(unit, how) : fail();
  }

  pattern_tree bracket(options how) {
    bracket_class made = read_bracket(*this);
    if (failed) return fail();
    made.set.has_other = true;
    if (!how.ignore_case) return units(made.set, made.exact);
    if (made.beyond_letters) return node(type::any_text);
    add_other_case(made.set);
    return units(made.set, false);
  }
};

}  // namespace

std::optional<pattern_tree> pattern_tree::parse(std::u16string_view pattern) {
  return reader(pattern).read();
}

}  // namespace grammar
