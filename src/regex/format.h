#pragma once

#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "regex/find.h"
#include "regex/parse.h"

namespace regex {

namespace detail {

/// A node of a replacement text. The numbers of the first five are fixed.
struct format_node {
  enum class kind : std::uint8_t { literal, capture, condition, upper_case, lower_case, group };

  format_node::kind what = kind::literal;
  unit_t unit = 0;
  unsigned group = 0;
  std::vector<format_node> content;  // of a condition: for a group that is set
  std::vector<format_node> if_unset = {};
};

/// `stops` are the units at which the text around this one goes on; nothing of them is consumed.
template <class T>
T const* parse_format(T const* first, T const* last, std::string_view stops,
                      std::vector<format_node>& nodes, unsigned nesting);

extern template char const* parse_format(char const*, char const*, std::string_view,
                                         std::vector<format_node>&, unsigned);
extern template char16_t const* parse_format(char16_t const*, char16_t const*, std::string_view,
                                             std::vector<format_node>&, unsigned);

}  // namespace detail

/// A replacement text for matches of our own engine, parsed. Users' patterns are Oniguruma's, with
/// replacements in regex/oniguruma_format.h; this one is used by tests, as a plain second version.
///
///     $1            the text of the group; nothing if it took no part in the match
///     ?1then:else   by whether group 1 took part; "else" ends where the text around it does
///     (text)        brackets a condition; has no output of its own
///     \Utext\E      in upper case, \L in lower; without \E to the end of the text around it
///     \n, \t, ...   units, as in a pattern; \ before any other unit stands for that unit
///
/// `T` is the unit it is written in, `Out` the output iterator that results are written to.
template <class T, class Out>
class fmt_t {
 public:
  explicit fmt_t(T const* format) {
    std::basic_string_view<T> const text(format);
    parse(text.data(), text.data() + text.size(), 0);
  }
  fmt_t(T const* first, T const* last) { parse(first, last, 0); }

  /// Appends what stands in [first, last) up to `stop`, or to the end when that is 0.
  T const* parse(T const* first, T const* last, char stop) {
    return detail::parse_format(first, last, std::string_view(&stop, stop == 0 ? 0 : 1), nodes_, 0);
  }

  /// Writes what the text gives for the match. Returns the position after it.
  template <class Iterator>
  Out operator()(match<Iterator> const& m, Out out) const {
    write(nodes_, m, out, letter_case::as_is);
    return out;
  }

 private:
  enum class letter_case : std::uint8_t { as_is, upper, lower };
  using node = detail::format_node;

  template <class C>
  static C in_case(C c, letter_case to) {
    if (to == letter_case::upper) return traits<C>::to_upper(c);
    if (to == letter_case::lower) return traits<C>::to_lower(c);
    return c;
  }

  /// A byte of the format is never taken for a character beyond ASCII.
  static unit_t literal_in_case(unit_t u, letter_case to) {
    T const c = static_cast<T>(u);
    return to_unit(c) == u ? to_unit(in_case(c, to)) : in_case(u, to);
  }

  template <class Iterator>
  static void write(std::vector<node> const& nodes, match<Iterator> const& m, Out& out,
                    letter_case to) {
    for (node const& n : nodes) {
      switch (n.what) {
        case node::kind::literal:
          *out++ = literal_in_case(n.unit, to);
          break;
        case node::kind::capture:
          if (!m.is_set(n.group)) break;
          for (Iterator it = m.begin(n.group); it != m.end(n.group); ++it)
            *out++ = in_case(*it, to);
          break;
        case node::kind::condition:
          write(m.is_set(n.group) ? n.content : n.if_unset, m, out, to);
          break;
        case node::kind::upper_case:
          write(n.content, m, out, letter_case::upper);
          break;
        case node::kind::lower_case:
          write(n.content, m, out, letter_case::lower);
          break;
        case node::kind::group:
          write(n.content, m, out, to);
          break;
      }
    }
  }

  std::vector<node> nodes_;
};

/// A functor for `find_all` that copies what lies between the matches and writes the format for
/// each. `finish` copies what is left after the last one.
template <class Iterator, class T, class Out>
class passthru_t {
 public:
  passthru_t(Iterator first, fmt_t<T, Out> const& format, Out out)
      : copied_(first), format_(&format), out_(out) {}

  void operator()(match<Iterator> const& m) {
    copy_up_to(m.begin());
    out_ = (*format_)(m, out_);
    copied_ = m.end();
  }

  Out finish(Iterator last) {
    copy_up_to(last);
    return out_;
  }

 private:
  void copy_up_to(Iterator end) {
    for (; copied_ != end; ++copied_) *out_++ = *copied_;
  }

  Iterator copied_;
  fmt_t<T, Out> const* format_;  // not owned
  Out out_;
};

/// Writes [first, last) to `out`, with each match replaced by what the format gives for it. When
/// the search gives up, the rest of the text is written as it is.
template <class Iterator, class P, class T, class Out>
Out replace(Iterator first, Iterator last, nfa<P> const& pattern, fmt_t<T, Out> const& format,
            Out out, limits const& allowed = {}) {
  passthru_t<Iterator, T, Out> passthru(first, format, out);
  return find_all(first, last, pattern, passthru, allowed).finish(last);
}

template <class Iterator, class P, class T, class Out>
Out replace(Iterator first, Iterator last, nfa<P> const& pattern, T const* format, Out out) {
  return replace(first, last, pattern, fmt_t<T, Out>(format), out);
}

template <class Iterator, class P, class T, class Out>
Out replace(Iterator first, Iterator last, P const* pattern, T const* format, Out out) {
  return replace(first, last, nfa<P>(pattern), format, out);
}

}  // namespace regex
