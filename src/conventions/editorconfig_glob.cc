#include "conventions/editorconfig_glob.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/utf.h"

// A glob is parsed into a tree, and a node takes the set of the places of the path that one may be
// at before it to the set of those after it. So no choice is ever tried again.

namespace conventions {
namespace {

constexpr std::size_t deepest_nesting = 64;
constexpr std::size_t most_digits = 18;

using characters = std::u32string;
using places =
    std::vector<std::uint8_t>;  // for each place, the end included: whether it is reached

characters characters_of(std::string_view utf8) {
  std::u16string const units = unicode::to_utf16(utf8);
  characters result;
  for (std::size_t at = 0; at < units.size(); ++at) {
    char32_t const unit = units[at];
    bool const pair = unit >> 10 == 0x36 && at + 1 < units.size() && units[at + 1] >> 10 == 0x37;
    if (pair)
      result += 0x10000 + ((unit & 0x3FF) << 10) + (units[++at] & 0x3FFu);
    else
      result += unit;
  }
  return result;
}

struct node {
  enum class kind { character, any_one, set, star, double_star, folders, range, choice };
  struct interval {
    char32_t first, last;
  };
  using sequence = std::vector<node>;

  kind what = kind::character;
  char32_t character = 0;
  bool negated = false;                // of a set
  std::vector<interval> members = {};  // of a set
  std::int64_t least = 0, most = 0;    // of a range
  std::vector<sequence> choices = {};
};

class parser {
 public:
  explicit parser(characters const& glob) : glob_(glob) {}

  node::sequence parse(std::size_t first, std::size_t last, std::size_t depth) {
    node::sequence result;
    for (std::size_t at = first; at < last;) result.push_back(next(at, last, depth));
    return result;
  }
  bool is_too_deep() const { return is_too_deep_; }

 private:
  node next(std::size_t& at, std::size_t last, std::size_t depth) {
    using enum node::kind;
    char32_t const c = glob_[at];
    auto const is = [&](std::size_t place, char32_t wanted) {
      return place < last && glob_[place] == wanted;
    };
    if (c == U'\\' && at + 1 < last) {
      at += 2;
      return plain(glob_[at - 1]);
    }
    // "a/**/b" is "a/b" too.
    if (c == U'/' && is(at + 1, U'*') && is(at + 2, U'*') && is(at + 3, U'/')) {
      at += 4;
      while (is(at, U'*') && is(at + 1, U'*') && is(at + 2, U'/')) at += 3;
      return {.what = folders};
    }
    if (c == U'*') {
      bool const is_double = is(at + 1, U'*');
      while (is(at, U'*')) ++at;
      return {.what = is_double ? double_star : star};
    }
    if (c == U'?') {
      ++at;
      return {.what = any_one};
    }
    if (c == U'[')
      if (auto found = set_at(at, last)) return std::move(*found);
    if (c == U'{')
      if (auto found = braces_at(at, last, depth)) return std::move(*found);
    ++at;
    return plain(c);
  }

  static node plain(char32_t c) { return {.what = node::kind::character, .character = c}; }

  // One with a slash inside is none.
  std::optional<node> set_at(std::size_t& at, std::size_t last) {
    node result{.what = node::kind::set};
    if (at < no_set_before_) return std::nullopt;
    std::size_t place = at + 1;
    if (place < last && glob_[place] == U'!') {
      result.negated = true;
      ++place;
    }
    for (std::size_t const begin = place; place < last; ++place) {
      char32_t c = glob_[place];
      if (c == U']' && place != begin) {
        at = place + 1;
        return result;
      }
      if (c == U'/') break;
      no_set_before_ = place;
      if (c == U'\\' && place + 1 < last) c = glob_[++place];
      node::interval members{c, c};
      if (place + 2 < last && glob_[place + 1] == U'-' && glob_[place + 2] != U']') {
        members.last = glob_[place + 2];
        if (members.last == U'/') break;
        place += 2;
      }
      result.members.push_back(members);
    }
    return std::nullopt;
  }

  /// The commas of the group at `at`, of its own level, and its end. Nothing if it has none.
  std::optional<std::vector<std::size_t>> borders(std::size_t at, std::size_t last) {
    std::vector<std::size_t> result;
    std::size_t depth = 0;
    for (std::size_t place = at + 1; place < last; ++place) {
      char32_t const c = glob_[place];
      if (c == U'\\') ++place;
      if (c == U'{' && ++depth > deepest_nesting) is_too_deep_ = true;
      if (is_too_deep_) return std::nullopt;
      if (c == U',' && depth == 0) result.push_back(place);
      if (c != U'}') continue;
      if (depth == 0) {
        result.push_back(place);
        return result;
      }
      --depth;
    }
    return std::nullopt;
  }

  std::optional<node> braces_at(std::size_t& at, std::size_t last, std::size_t depth) {
    // Each brace without a partner would be looked for to the end again.
    if (has_no_partner_) return std::nullopt;
    auto const found = borders(at, last);
    if (depth >= deepest_nesting) is_too_deep_ = true;
    if (is_too_deep_) return std::nullopt;
    if (!found) {
      has_no_partner_ = depth == 0;
      return std::nullopt;
    }
    std::size_t const end = found->back();
    if (found->size() == 1) {
      auto range = range_in(at + 1, end);
      if (range) at = end + 1;
      return range;
    }
    node result{.what = node::kind::choice};
    std::size_t from = at + 1;
    for (std::size_t const border : *found) {
      result.choices.push_back(parse(from, border, depth + 1));
      from = border + 1;
    }
    at = end + 1;
    return result;
  }

  std::optional<node> range_in(std::size_t first, std::size_t last) const {
    std::size_t const dots = glob_.find(U"..", first);
    if (dots == glob_.npos || dots + 2 > last) return std::nullopt;
    auto const from = number(first, dots), to = number(dots + 2, last);
    if (!from || !to) return std::nullopt;
    return node{
        .what = node::kind::range, .least = std::min(*from, *to), .most = std::max(*from, *to)};
  }

  std::optional<std::int64_t> number(std::size_t first, std::size_t last) const {
    bool const negative = first < last && glob_[first] == U'-';
    if (first < last && (negative || glob_[first] == U'+')) ++first;
    if (first >= last || last - first > most_digits) return std::nullopt;
    std::int64_t value = 0;
    for (; first < last; ++first) {
      if (glob_[first] < U'0' || glob_[first] > U'9') return std::nullopt;
      value = value * 10 + (glob_[first] - U'0');
    }
    return negative ? -value : value;
  }

  characters const& glob_;
  bool is_too_deep_ = false, has_no_partner_ = false;
  std::size_t no_set_before_ = 0;  // so that nothing is looked through for an end twice
};

class matcher {
 public:
  explicit matcher(characters const& path) : path_(path) {}

  places after(node::sequence const& nodes, places reached) const {
    for (node const& each : nodes) {
      if (std::find(reached.begin(), reached.end(), 1) == reached.end()) break;
      reached = after(each, reached);
    }
    return reached;
  }

 private:
  places after(node const& each, places const& from) const {
    using enum node::kind;
    places to(from.size());
    switch (each.what) {
      case character:
      case any_one:
      case set:
        for (std::size_t at = 0; at < path_.size(); ++at)
          if (from[at] && is_one(each, path_[at])) to[at + 1] = 1;
        return to;
      case star:
      case double_star:
        to = from;
        for (std::size_t at = 0; at < path_.size(); ++at)
          if (to[at] && (each.what == double_star || path_[at] != U'/')) to[at + 1] = 1;
        return to;
      case folders: {
        bool begun = false;
        for (std::size_t at = 0; at < path_.size(); ++at) {
          if (path_[at] != U'/') continue;
          if (from[at] || begun) to[at + 1] = 1;
          // From the first slash on each further one will do.
          begun = begun || from[at];
        }
        return to;
      }
      case range:
        for (std::size_t at = 0; at < path_.size(); ++at)
          if (from[at]) add_numbers(each, at, to);
        return to;
      case choice:
        for (node::sequence const& one : each.choices) {
          places const some = after(one, from);
          for (std::size_t at = 0; at < to.size(); ++at) to[at] |= some[at];
        }
        return to;
    }
    return to;
  }

  static bool is_one(node const& each, char32_t c) {
    if (each.what == node::kind::character) return c == each.character;
    if (c == U'/') return false;
    if (each.what == node::kind::any_one) return true;
    bool const is_member = std::any_of(
        each.members.begin(), each.members.end(),
        [c](node::interval const& members) { return members.first <= c && c <= members.last; });
    return is_member != each.negated;
  }

  void add_numbers(node const& range, std::size_t at, places& to) const {
    bool const negative = path_[at] == U'-';
    std::size_t const first = at + (negative || path_[at] == U'+' ? 1 : 0);
    std::int64_t value = 0;
    for (std::size_t end = first; end < path_.size() && end < first + most_digits; ++end) {
      if (path_[end] < U'0' || path_[end] > U'9') return;
      if (end != first && path_[first] == U'0') return;  // no leading zeros
      value = value * 10 + (path_[end] - U'0');
      std::int64_t const number = negative ? -value : value;
      if (range.least <= number && number <= range.most) to[end + 1] = 1;
    }
  }

  characters const& path_;
};

bool has_plain_slash(characters const& glob) {
  for (std::size_t at = 0; at < glob.size(); ++at) {
    if (glob[at] == U'\\')
      ++at;
    else if (glob[at] == U'/')
      return true;
  }
  return false;
}

}  // namespace

bool editorconfig_glob_matches(std::string_view glob, std::string_view path) {
  characters pattern = characters_of(glob);
  bool const is_anchored = has_plain_slash(pattern);
  if (pattern.starts_with(U'/')) pattern.erase(0, 1);
  characters const names = characters_of(path);
  places start(names.size() + 1);
  for (std::size_t at = 0; at < start.size(); ++at)
    start[at] = at == 0 || (!is_anchored && names[at - 1] == U'/');
  // "**/b" is "b" too.
  if (pattern.starts_with(U"**/")) {
    pattern.erase(0, 3);
    for (std::size_t at = 1; at < start.size(); ++at) start[at] = names[at - 1] == U'/';
  }
  parser parsing(pattern);
  node::sequence const nodes = parsing.parse(0, pattern.size(), 0);
  return !parsing.is_too_deep() && matcher(names).after(nodes, start).back() != 0;
}

}  // namespace conventions
