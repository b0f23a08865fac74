#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "regex/traits.h"

namespace regex {

/// The whole match and the captures; further groups of a pattern capture nothing.
inline constexpr unsigned max_groups = 64;

}  // namespace regex

/// What a pattern says, as read and before it is compiled: lists of nodes.
namespace regex::parse_tree {

enum class group_type : std::uint8_t {
  options,
  capture,
  look_ahead,
  look_behind,
  negative_look_ahead,
  negative_look_behind,
  no_backtrack,
  condition,
  recursion
};

enum option : std::uint8_t {
  ignore_case = 1,
  dot_matches_newline = 2,
  multi_line = 4,  // accepted without effect: "^" and "$" are always about lines
  extended = 8,    // accepted without effect
  clear_shift = 4  // the bit that switches an option off stands this far to the left
};

enum class anchor : std::uint8_t {
  text_start,
  text_end,
  line_start,
  line_end,
  word_start,
  word_end,
  word_boundary,
  not_word_boundary
};

struct node;

/// Doubly linked; owns nothing. `depth` is how deep the constructs in it nest.
struct node_list {
  node* head = nullptr;
  node* tail = nullptr;
  unsigned depth = 0;

  bool empty() const { return head == nullptr; }
  void push_back(node* n);
  node* pop_back();
};

struct literal_data {
  unit_t unit;
};

struct class_data {
  unit_class code;
  bool negate;
};

/// A bracket class of more than one class: ranges of units, both ends included, and classes.
struct range_data {
  std::vector<std::pair<unit_t, unit_t>> ranges;
  std::vector<class_data> classes;
  bool negate;
};

struct anchor_data {
  anchor code;
};

struct backreference_data {
  unsigned group;
};

struct repeat_data {
  unsigned min;
  int max;  // -1 is no limit
  bool greedy;
  node* content;  // null when there was nothing to repeat
};

struct group_data {
  group_type type;
  std::uint8_t options;  // of enum option
  unsigned number;       // of the capture, from 1; 0 for other types
  node_list content;
};

struct or_data {
  node_list left, right;
};

struct condition_data {
  unsigned group;
  node_list if_set, if_unset;
};

class visitor {
 public:
  virtual ~visitor() = default;
  virtual void visit(literal_data const&) = 0;
  virtual void visit(class_data const&) = 0;
  virtual void visit(range_data const&) = 0;
  virtual void visit(anchor_data const&) = 0;
  virtual void visit(backreference_data const&) = 0;
  virtual void visit(repeat_data const&) = 0;
  virtual void visit(group_data const&) = 0;
  virtual void visit(or_data const&) = 0;
  virtual void visit(condition_data const&) = 0;
};

struct node {
  node* next = nullptr;
  node* prev = nullptr;
  unsigned depth = 0;

  virtual ~node() = default;
  virtual void accept(visitor& v) const = 0;
};

template <class Data>
struct template_node final : node {
  explicit template_node(Data d) : data(std::move(d)) {}
  void accept(visitor& v) const override { v.visit(data); }
  Data data;
};

}  // namespace regex::parse_tree
