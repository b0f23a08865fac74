#pragma once

#include <cstdint>
#include <limits>

#include "regex/unit_set.h"

/// The graph that a pattern is compiled to. Nodes that move are laid out for the direction in which
/// they are run: the content of a look-behind is `reverse`, reads the unit before the position and
/// has its nodes in the opposite order, so it ends where the text that leads up to the position
/// begins.
namespace regex::graph {

using parse_tree::anchor;
using parse_tree::group_type;

enum class node_kind : std::uint8_t {
  literal,
  class_,
  range,
  anchor,
  backreference,
  repeat,
  or_,
  capture_begin,
  capture_end,
  look_around,
  no_backtrack,
  recursion_begin,
  recursion_end,
  change_flag,
  condition,
  final
};

struct nfa_node {
  explicit nfa_node(node_kind k) : kind(k) {}
  virtual ~nfa_node() = default;
  nfa_node(nfa_node const&) = delete;
  nfa_node& operator=(nfa_node const&) = delete;

  node_kind const kind;
  std::uint32_t index = 0;  // of this node in the pattern's
  nfa_node* next = nullptr;
};

template <node_kind Kind, class Data>
struct template_node final : nfa_node, Data {
  explicit template_node(Data d) : nfa_node(Kind), Data(std::move(d)) {}
};

struct literal_data {
  unit_t unit;
  bool reverse;
};

struct class_data {
  unit_class code;
  bool negate, reverse;
};

struct range_data {
  unit_set set;
  bool negate, reverse;
};

struct anchor_data {
  anchor code;
};

struct backreference_data {
  unsigned group;
  bool reverse;
};

/// The content leads back to this node, `next` on after the loop. When the content is `single`,
/// one node that reads one unit, no counter is needed, and content.next isn't followed.
struct repeat_data {
  static constexpr std::uint32_t no_limit = std::numeric_limits<std::uint32_t>::max();

  std::uint32_t min, max;
  bool greedy, single, reverse;
  std::uint32_t counter;  // index of the loop's state in the machine
  nfa_node* content;
  // What reads the unit at the position where a single loop ends, in all cases; null if not known.
  nfa_node const* follow;
};

/// `next` is tried first.
struct or_data {
  nfa_node* other;
};

struct capture_begin_data {
  unsigned group;
  bool reverse;
};

struct capture_end_data {
  unsigned group;
  bool reverse;
};

/// The content ends in a final node of its own.
struct look_around_data {
  group_type type;
  nfa_node* content;

  bool is_negative() const {
    return type == group_type::negative_look_ahead || type == group_type::negative_look_behind;
  }
};

struct no_backtrack_data {
  nfa_node* content;
};

/// `next` is the start of the whole pattern; its final node continues at `end`.
struct recursion_begin_data {
  nfa_node* end;
  bool reverse;
};

/// The flags are those that hold after the recursion.
struct recursion_end_data {
  bool ignore_case, dot_matches_newline;
};

enum class flag : std::uint8_t { ignore_case, dot_matches_newline };

struct change_flag_data {
  graph::flag flag;
  bool value;
};

/// `next` is for a group that is set.
struct condition_data {
  unsigned group;
  nfa_node* other;
};

/// `owner` is the node whose content ends here, null at the end of the whole pattern.
struct final_data {
  nfa_node* owner;
};

using literal_node = template_node<node_kind::literal, literal_data>;
using class_node = template_node<node_kind::class_, class_data>;
using range_node = template_node<node_kind::range, range_data>;
using anchor_node = template_node<node_kind::anchor, anchor_data>;
using backreference_node = template_node<node_kind::backreference, backreference_data>;
using repeat_node = template_node<node_kind::repeat, repeat_data>;
using or_node = template_node<node_kind::or_, or_data>;
using capture_begin_node = template_node<node_kind::capture_begin, capture_begin_data>;
using capture_end_node = template_node<node_kind::capture_end, capture_end_data>;
using look_around_node = template_node<node_kind::look_around, look_around_data>;
using no_backtrack_node = template_node<node_kind::no_backtrack, no_backtrack_data>;
using recursion_begin_node = template_node<node_kind::recursion_begin, recursion_begin_data>;
using recursion_end_node = template_node<node_kind::recursion_end, recursion_end_data>;
using change_flag_node = template_node<node_kind::change_flag, change_flag_data>;
using condition_node = template_node<node_kind::condition, condition_data>;
using final_node = template_node<node_kind::final, final_data>;

/// Calls `visit` with the node as what it is. The machine runs through here once a step, so this is
/// a jump table and not a virtual call to a visitor that makes another.
template <class Visitor>
void accept(nfa_node const& n, Visitor& v) {
  switch (n.kind) {
    case node_kind::literal:
      return v.visit(static_cast<literal_node const&>(n));
    case node_kind::class_:
      return v.visit(static_cast<class_node const&>(n));
    case node_kind::range:
      return v.visit(static_cast<range_node const&>(n));
    case node_kind::anchor:
      return v.visit(static_cast<anchor_node const&>(n));
    case node_kind::backreference:
      return v.visit(static_cast<backreference_node const&>(n));
    case node_kind::repeat:
      return v.visit(static_cast<repeat_node const&>(n));
    case node_kind::or_:
      return v.visit(static_cast<or_node const&>(n));
    case node_kind::capture_begin:
      return v.visit(static_cast<capture_begin_node const&>(n));
    case node_kind::capture_end:
      return v.visit(static_cast<capture_end_node const&>(n));
    case node_kind::look_around:
      return v.visit(static_cast<look_around_node const&>(n));
    case node_kind::no_backtrack:
      return v.visit(static_cast<no_backtrack_node const&>(n));
    case node_kind::recursion_begin:
      return v.visit(static_cast<recursion_begin_node const&>(n));
    case node_kind::recursion_end:
      return v.visit(static_cast<recursion_end_node const&>(n));
    case node_kind::change_flag:
      return v.visit(static_cast<change_flag_node const&>(n));
    case node_kind::condition:
      return v.visit(static_cast<condition_node const&>(n));
    case node_kind::final:
      return v.visit(static_cast<final_node const&>(n));
  }
}

}  // namespace regex::graph
