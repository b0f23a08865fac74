#pragma once

#include <algorithm>
#include <array>
#include <deque>
#include <iterator>
#include <string>
#include <utility>

#include "actions/word_units.h"
#include "platform/unicode.h"
#include "platform/utf.h"
#include "text/char_types.h"

namespace actions {

/// The tags of HTML and XML, as far as a text tells by itself: what stands in comments and strings
/// counts too. Ranges are of UTF-16 units.

inline bool is_tag_name_unit(text::char_t u) {
  return is_word_char(u) || u == u':' || u == u'-' || u == u'.';
}
inline bool is_tag_blank(text::char_t u) {
  return u == u' ' || u == u'\n' || u == u'\r' || u == u'\t';
}

/// The first name in what follows a "<"; empty, at `last`, if there is none.
template <typename It>
std::pair<It, It> tag_name(It first, It last) {
  It const begin = std::find_if(first, last, is_tag_name_unit);
  return {begin, std::find_if_not(begin, last, is_tag_name_unit)};
}

/// Whether what follows a "<" makes the tag one that closes.
template <typename It>
bool is_close_tag(It first, It last) {
  It const at = std::find_if_not(first, last, is_tag_blank);
  return at != last && *at == u'/';
}

/// Whether the range, from a "<" to after its ">", is a tag that needs a closing one.
template <typename It>
bool is_block_start_tag(It first, It last) {
  static constexpr std::array<std::u16string_view, 13> without_content = {
      u"area", u"base",  u"basefont", u"br",   u"col",  u"frame", u"hr",
      u"img",  u"input", u"isindex",  u"link", u"meta", u"param"};
  first = std::find_if_not(first, last, is_tag_blank);
  if (first == last || *first != u'<' || ++first == last || !is_tag_name_unit(*first)) return false;
  It const end = std::find(first, last, u'>');
  if (end == last || *std::prev(end) == u'/') return false;
  std::u16string name(first, tag_name(first, end).second);
  std::transform(name.begin(), name.end(), name.begin(), unicode::to_lower);
  return std::find(without_content.begin(), without_content.end(), name) == without_content.end();
}

/// Finds the name of the innermost tag that is open at the end of a range of `T`; an empty range at
/// the end when there is none. Takes time in proportion to the way back to that tag.
template <typename T>
struct find_start_tag {
  std::pair<T, T> operator()(T first, T last) const {
    std::deque<std::u16string> closed;
    T const end = last;
    while (last != first) {
      T const after = find_before(first, last, u'>');
      if (after == first) break;
      T const inside = find_before(first, std::prev(after), u'<');
      if (inside == first) break;
      last = std::prev(inside);
      auto const [name, name_end] = tag_name(inside, std::prev(after));
      if (name == name_end) continue;
      if (is_close_tag(inside, after)) {
        closed.emplace_back(name, name_end);
      } else if (is_block_start_tag(last, after)) {
        if (closed.empty()) return {name, name_end};
        if (closed.back() == std::u16string(name, name_end)) closed.pop_back();
      }
    }
    return {end, end};
  }

 private:
  /// The position after the last `unit` before `last`; `first` if there is none.
  static T find_before(T first, T last, text::char_t unit) {
    return std::find(std::make_reverse_iterator(last), std::make_reverse_iterator(first), unit)
        .base();
  }
};

}  // namespace actions
