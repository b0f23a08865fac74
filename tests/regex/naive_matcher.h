#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// Patterns as trees and the plainest matcher for them: continuations, copies of all state, and
/// every start position tried in turn. What the engine is measured against; shares nothing with it.
namespace naive {

struct node {
  enum class kind {
    unit,  // any of `text`, or none of it when negated
    any,
    sequence,
    alternatives,
    repeat,
    capture,
    backreference,
    anchor,  // `text` as written
    look_ahead,
    look_behind,
    atomic,
    condition
  };

  kind what = kind::sequence;
  std::string text = {};
  bool negate = false;
  int min = 0, max = -1;
  bool greedy = true;
  int number = 0;
  std::vector<node> parts = {};
};

using captures = std::map<int, std::pair<int, int>>;

struct result {
  int begin, end;
  captures groups;
};

class matcher {
 public:
  explicit matcher(std::string text) : text_(std::move(text)) {}

  /// Nothing when the pattern doesn't match. `too_long()` says that the answer is worth nothing.
  std::optional<result> find(node const& pattern) {
    for (int start = 0; start <= length(); ++start) {
      std::optional<result> found;
      run(pattern, start, {}, [&](int end, captures const& groups) {
        found = result{start, end, groups};
        return true;
      });
      if (found || too_long()) return found;
    }
    return std::nullopt;
  }

  bool too_long() const { return steps_ > 200'000; }

 private:
  using continuation = std::function<bool(int, captures const&)>;

  int length() const { return static_cast<int>(text_.size()); }
  bool is_word(int i) const {
    return i >= 0 && i < length() && text_[i] != ' ' && text_[i] != '\n';
  }

  bool holds(std::string const& anchor, int at) const {
    bool const before = is_word(at - 1), after = is_word(at);
    if (anchor == "^") return at == 0 || text_[at - 1] == '\n';
    if (anchor == "$") return at == length() || text_[at] == '\n';
    if (anchor == "\\A") return at == 0;
    if (anchor == "\\z") return at == length();
    if (anchor == "\\<") return !before && after;
    if (anchor == "\\>") return before && !after;
    return (before != after) == (anchor == "\\b");
  }

  bool run(node const& n, int at, captures const& groups, continuation const& go_on) {
    if (++steps_ > 200'000) return true;
    switch (n.what) {
      case node::kind::unit:
        return at < length() && (n.text.find(text_[at]) != n.text.npos) != n.negate &&
               go_on(at + 1, groups);
      case node::kind::any:
        return at < length() && text_[at] != '\n' && go_on(at + 1, groups);
      case node::kind::sequence:
        return run_sequence(n, 0, at, groups, go_on);
      case node::kind::alternatives:
        for (node const& part : n.parts) {
          if (run(part, at, groups, go_on)) return true;
        }
        return false;
      case node::kind::repeat:
        return run_repeat(n, 0, -1, at, groups, go_on);
      case node::kind::capture:
        return run(n.parts[0], at, groups, [&](int end, captures inner) {
          inner[n.number] = {at, end};
          return go_on(end, inner);
        });
      case node::kind::backreference: {
        auto const group = groups.find(n.number);
        if (group == groups.end()) return false;
        auto const [begin, end] = group->second;
        return text_.compare(at, end - begin, text_, begin, end - begin) == 0 &&
               go_on(at + end - begin, groups);
      }
      case node::kind::anchor:
        return holds(n.text, at) && go_on(at, groups);
      case node::kind::look_ahead: {
        auto const inside = first_way(n.parts[0], at, groups);
        if (n.negate) return !inside && go_on(at, groups);
        return inside && go_on(at, inside->groups);
      }
      case node::kind::look_behind: {
        bool found = false;
        for (int start = 0; start <= at && !found; ++start) {
          found =
              run(n.parts[0], start, groups, [&](int end, captures const&) { return end == at; });
        }
        return found != n.negate && go_on(at, groups);
      }
      case node::kind::atomic: {
        auto const inside = first_way(n.parts[0], at, groups);
        return inside && go_on(inside->end, inside->groups);
      }
      case node::kind::condition:
        return run(n.parts[groups.count(n.number) ? 0 : 1], at, groups, go_on);
    }
    return false;
  }

  std::optional<result> first_way(node const& n, int at, captures const& groups) {
    std::optional<result> found;
    run(n, at, groups, [&](int end, captures const& inner) {
      found = result{at, end, inner};
      return true;
    });
    return found;
  }

  bool run_sequence(node const& n, std::size_t part, int at, captures const& groups,
                    continuation const& go_on) {
    if (part == n.parts.size()) return go_on(at, groups);
    return run(n.parts[part], at, groups, [&, part](int end, captures const& inner) {
      return run_sequence(n, part + 1, end, inner, go_on);
    });
  }

  bool run_repeat(node const& n, int count, int turn_start, int at, captures const& groups,
                  continuation const& go_on) {
    auto const one_more = [&] {
      return run(n.parts[0], at, groups, [&, count](int end, captures const& inner) {
        return run_repeat(n, count + 1, at, end, inner, go_on);
      });
    };
    if (n.max >= 0 && count >= n.max) return go_on(at, groups);
    if (count < n.min) return one_more();
    if (count > 0 && turn_start == at) return go_on(at, groups);
    if (n.greedy) return one_more() || go_on(at, groups);
    return go_on(at, groups) || one_more();
  }

  std::string text_;
  long steps_ = 0;
};

}  // namespace naive
