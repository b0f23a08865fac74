#include "naive_matcher.h"
#include "regex/find.h"
#include "test.h"

namespace {

using naive::node;

std::string describe(std::optional<naive::result> const& found) {
  if (!found) return "none";
  std::string result = std::to_string(found->begin) + "-" + std::to_string(found->end);
  for (auto const& [n, range] : found->groups)
    result += " " + std::to_string(n) + ":" + std::to_string(range.first) + "-" +
              std::to_string(range.second);
  return result;
}

std::string run_engine(regex::nfa<char> const& nfa, std::string const& text) {
  auto const m = regex::find(text.begin(), text.end(), nfa);
  if (m.gave_up()) return "gave up";
  if (!m) return "none";
  naive::result found{int(m.begin() - text.begin()), int(m.end() - text.begin()), {}};
  for (std::size_t n = 1; n < m.size(); ++n) {
    if (m.is_set(n)) found.groups[n] = {m.begin(n) - text.begin(), m.end(n) - text.begin()};
  }
  return describe(found);
}

/// Makes random trees, and the patterns that mean them.
class tree_maker {
 public:
  explicit tree_maker(unsigned seed) : random_(seed) {}

  node make() { return alternatives(3, false); }

  std::string text() {
    std::string result;
    for (int i = pick(7); i > 0; --i) result += "aab \n"[pick(5)];
    return result;
  }

 private:
  int pick(int n) { return std::uniform_int_distribution(0, n - 1)(random_); }

  // A look-behind runs its content backwards, so captures and groups that do not backtrack would
  // tell the direction: `plain` content has none.
  node alternatives(int depth, bool plain) {
    node result{.what = node::kind::alternatives};
    for (int i = pick(4) == 0 ? 2 : 1; i > 0; --i) result.parts.push_back(sequence(depth, plain));
    return result;
  }

  node sequence(int depth, bool plain) {
    node result{.what = node::kind::sequence};
    for (int i = pick(4); i > 0; --i) {
      node part = atom(depth, plain);
      if (pick(3) == 0 && part.what != node::kind::anchor) part = repeat(part);
      result.parts.push_back(part);
    }
    return result;
  }

  node repeat(node const& content) {
    node result{.what = node::kind::repeat, .min = pick(3), .greedy = pick(3) != 0};
    result.max = pick(2) ? -1 : result.min + pick(3);
    result.parts.push_back(content);
    return result;
  }

  node atom(int depth, bool plain) {
    static std::string const anchors[] = {"^", "$", "\\A", "\\z", "\\<", "\\>", "\\b", "\\B"};
    switch (depth == 0 ? pick(5) : pick(plain ? 7 : 11)) {
      case 0:
        return {.what = node::kind::any};
      case 1:
        return {.what = node::kind::anchor, .text = anchors[pick(8)]};
      case 2:
        return {.what = node::kind::unit, .text = pick(2) ? "ab" : "b ", .negate = pick(2) == 0};
      case 3:
        if (!plain && captures_ > 0)
          return {.what = node::kind::backreference, .number = 1 + pick(captures_)};
        [[fallthrough]];
      case 4:
        return {.what = node::kind::unit, .text = std::string(1, "ab"[pick(2)])};
      case 5:
        return alternatives(depth - 1, plain);
      case 6:
        return around(node::kind::look_behind, alternatives(depth - 1, true), pick(2));
      case 7:
        return around(node::kind::look_ahead, alternatives(depth - 1, plain), pick(2));
      case 8:
        return around(node::kind::atomic, alternatives(depth - 1, plain), false);
      case 9:
        if (captures_ > 0) {
          node result{.what = node::kind::condition, .number = 1 + pick(captures_)};
          for (int i = 0; i < 2; ++i) result.parts.push_back(alternatives(depth - 1, plain));
          return result;
        }
        [[fallthrough]];
      default: {
        int const number = ++captures_;
        node result{.what = node::kind::capture, .number = number};
        result.parts.push_back(alternatives(depth - 1, plain));
        return result;
      }
    }
  }

  node around(node::kind what, node content, bool negate) {
    node result{.what = what, .negate = negate};
    result.parts.push_back(std::move(content));
    return result;
  }

  std::mt19937 random_;
  int captures_ = 0;
};

std::string print(node const& n);

std::string print_parts(node const& n, std::string const& separator) {
  std::string result;
  for (std::size_t i = 0; i < n.parts.size(); ++i)
    result += (i ? separator : "") + print(n.parts[i]);
  return result;
}

std::string print(node const& n) {
  switch (n.what) {
    case node::kind::unit:
      return n.text.size() == 1 && !n.negate ? n.text : (n.negate ? "[^" : "[") + n.text + "]";
    case node::kind::any:
      return ".";
    case node::kind::sequence:
      return print_parts(n, "");
    case node::kind::alternatives:
      return "(?:" + print_parts(n, "|") + ")";
    case node::kind::repeat:
      return "(?:" + print_parts(n, "") + "){" + std::to_string(n.min) + "," +
             (n.max < 0 ? "" : std::to_string(n.max)) + (n.greedy ? "}" : "}?");
    case node::kind::capture:
      return "(" + print_parts(n, "") + ")";
    case node::kind::backreference:
      return "\\" + std::to_string(n.number);
    case node::kind::anchor:
      return n.text;
    case node::kind::look_ahead:
      return (n.negate ? "(?!" : "(?=") + print_parts(n, "") + ")";
    case node::kind::look_behind:
      return (n.negate ? "(?<!" : "(?<=") + print_parts(n, "") + ")";
    case node::kind::atomic:
      return "(?>" + print_parts(n, "") + ")";
    case node::kind::condition:
      return "(?(" + std::to_string(n.number) + ")" + print(n.parts[0]) + ":" + print(n.parts[1]) +
             ")";
  }
  return "";
}

TEST(enumerated, random_patterns_of_every_construct) {
  int compared = 0, faults = 0, matched = 0;
  for (unsigned seed = 0; seed < 20'000 && faults < 10; ++seed) {
    tree_maker maker(seed);
    node const tree = maker.make();
    std::string const pattern = print(tree);
    regex::nfa<char> const nfa(pattern.c_str());
    for (int i = 0; i < 6; ++i) {
      std::string const text = maker.text();
      naive::matcher matcher(text);
      auto const expected = matcher.find(tree);
      if (matcher.too_long()) continue;
      ++compared;
      matched += expected.has_value();
      auto const got = run_engine(nfa, text);
      faults += got != describe(expected);
      EXPECT_EQ(got, describe(expected)) << "pattern " << pattern << ", text \"" << text << "\"";
    }
  }
  EXPECT_GT(compared, 100'000);
  EXPECT_GT(matched, 50'000);
}

}  // namespace
