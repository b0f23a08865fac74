#include "regex/first_units.h"

#include <utility>
#include <vector>

#include "regex/nfa.h"

namespace regex {

using namespace graph;

namespace {

/// Walks the graph from its start through all that reads nothing, up to the nodes that read a unit.
/// Whatever it cannot judge it takes for "anything may come".
class first_units_visitor {
 public:
  explicit first_units_visitor(nfa_graph const& pattern)
      : seen_(pattern.nodes.size() * 4), left_(seen_.size()) {
    found_.may_be_empty = false;
    push(pattern.start);
    while (!pending_.empty()) {
      auto const [node, flags] = pending_.back();
      pending_.pop_back();
      flags_ = flags;
      accept(*node, *this);
    }
  }

  first_units const& found() const { return found_; }

  void visit(literal_node const& n) {
    if (n.unit >= 128 || flags_ & 1) found_.beyond_ascii = true;
    add_where([&](unit_t u) {
      return flags_ & 1 ? traits<unit_t>::equal_nocase(u, n.unit) : u == n.unit;
    });
  }
  void visit(class_node const& n) {
    if (n.code == unit_class::word) {
      (n.negate ? found_.not_word : found_.word) = true;
      return;
    }
    found_.beyond_ascii = true;
    add_where([&](unit_t u) {
      bool const in_class =
          n.code == unit_class::any ? (flags_ & 2) || u != u'\n' : traits<unit_t>::is(n.code, u);
      return in_class != n.negate;
    });
  }
  void visit(range_node const& n) {
    found_.beyond_ascii = true;
    // Which units are word characters may change after the pattern was made: that is left open.
    if (!n.negate) {
      found_.word |= n.set.has_word_class(false);
      found_.not_word |= n.set.has_word_class(true);
    }
    add_where([&](unit_t u) { return n.set.has_always(u) != n.negate; });
  }
  void visit(anchor_node const& n) { push(n.next); }
  void visit(backreference_node const&) { found_.may_be_empty = true; }
  void visit(repeat_node const& n) {
    if (n.single) {
      accept(*n.content, *this);
      if (n.min == 0) push(n.next);
    } else {
      push(n.content);
      if (n.min == 0) push(n.next);
    }
  }
  void visit(or_node const& n) {
    push(n.next);
    push(n.other);
  }
  void visit(capture_begin_node const& n) { push(n.next); }
  void visit(capture_end_node const& n) { push(n.next); }
  void visit(look_around_node const& n) { push(n.next); }
  void visit(no_backtrack_node const& n) { push(n.content); }
  void visit(recursion_begin_node const&) { found_.may_be_empty = true; }
  void visit(recursion_end_node const&) { found_.may_be_empty = true; }
  void visit(change_flag_node const& n) {
    unsigned const bit = n.flag == flag::ignore_case ? 1 : 2;
    flags_ = n.value ? flags_ | bit : flags_ & ~bit;
    push(n.next);
  }
  void visit(condition_node const& n) {
    push(n.next);
    push(n.other);
  }
  void visit(final_node const& n) {
    if (n.owner) {
      push(n.owner->next);
    } else {
      found_.may_be_empty = true;
    }
  }

 private:
  void push(nfa_node const* n) {
    std::size_t const state = n->index * 4 + flags_;
    if (!seen_[state]) {
      seen_[state] = true;
      pending_.emplace_back(n, flags_);
    } else if (n->kind == node_kind::repeat && !left_[state]) {
      // The way back into a loop whose content can be empty: the loop can end here.
      left_[state] = true;
      push(n->next);
    }
  }

  template <class Test>
  void add_where(Test test) {
    for (unit_t u = 0; u < 128; ++u) {
      if (test(u)) found_.ascii[u >> 6] |= std::uint64_t{1} << (u & 63);
    }
  }

  first_units found_;
  unsigned flags_ = 0;             // bit 0 ignores case, bit 1 lets dots match line feeds
  std::vector<bool> seen_, left_;  // by node and flags
  std::vector<std::pair<nfa_node const*, unsigned>> pending_;
};

/// The anchor that every match begins with, where there is only one way to begin.
first_units::place place_of_start(nfa_node const* n) {
  for (;; n = n->next) {
    switch (n->kind) {
      case node_kind::capture_begin:
      case node_kind::change_flag:
      case node_kind::look_around:
        break;
      case node_kind::anchor:
        switch (static_cast<anchor_node const*>(n)->code) {
          case anchor::text_start:
            return first_units::place::text_start;
          case anchor::line_start:
            return first_units::place::line_start;
          default:
            break;
        }
        break;
      default:
        return first_units::place::anywhere;
    }
  }
}

}  // namespace

first_units find_first_units(nfa_graph const& pattern) {
  first_units found = first_units_visitor(pattern).found();
  found.begins_at = place_of_start(pattern.start);
  return found;
}

}  // namespace regex
