#include "regex/build_nfa_visitor.h"

#include <algorithm>
#include <string>

#include "regex/parse.h"

namespace regex {

using namespace graph;

template <class Node, class Data>
Node* build_nfa_visitor::make(Data data, nfa_node* next) {
  auto node = std::make_unique<Node>(std::move(data));
  node->next = next;
  node->index = static_cast<std::uint32_t>(out_.nodes.size());
  Node* const result = node.get();
  out_.nodes.push_back(std::move(node));
  return result;
}

void build_nfa_visitor::build_pattern(parse_tree::node_list const& pattern) {
  nfa_node* const end = make<final_node>(final_data{nullptr}, nullptr);
  nfa_node* const start = build(pattern, end);
  out_.start = start;
  // A recursion inside a look-behind runs the whole pattern backwards; few patterns need that copy.
  nfa_node* reverse_start = nullptr;
  for (std::size_t i = 0; i < recursions_.size(); ++i) {
    if (recursions_[i]->reverse && !reverse_start) {
      reverse_ = true;
      reverse_start = build(pattern, end);
      reverse_ = false;
    }
    recursions_[i]->next = recursions_[i]->reverse ? reverse_start : start;
  }
}

nfa_node* build_nfa_visitor::build(parse_tree::node_list const& list, nfa_node* next) {
  nfa_node* const outer = std::exchange(current_, next);
  if (reverse_) {
    for (auto n = list.head; n; n = n->next) n->accept(*this);
  } else {
    for (auto n = list.tail; n; n = n->prev) n->accept(*this);
  }
  return std::exchange(current_, outer);
}

nfa_node* build_nfa_visitor::build_content(parse_tree::node_list const& list, nfa_node* owner,
                                           bool reverse) {
  bool const outer = std::exchange(reverse_, reverse);
  nfa_node* const start = build(list, make<final_node>(final_data{owner}, nullptr));
  reverse_ = outer;
  return start;
}

void build_nfa_visitor::visit(parse_tree::literal_data const& d) {
  current_ = make<literal_node>(literal_data{d.unit, reverse_}, current_);
}

void build_nfa_visitor::visit(parse_tree::class_data const& d) {
  current_ = make<class_node>(class_data{d.code, d.negate, reverse_}, current_);
}

void build_nfa_visitor::visit(parse_tree::range_data const& d) {
  current_ = make<range_node>(range_data{unit_set(d), d.negate, reverse_}, current_);
}

void build_nfa_visitor::visit(parse_tree::anchor_data const& d) {
  current_ = make<anchor_node>(anchor_data{d.code}, current_);
}

void build_nfa_visitor::visit(parse_tree::backreference_data const& d) {
  current_ = make<backreference_node>(backreference_data{d.group, reverse_}, current_);
}

static bool reads_one_unit(nfa_node const* n) {
  return n->kind <= node_kind::range;
}

static nfa_node const* reader_of_next_unit(nfa_node const* n) {
  while (n->kind == node_kind::capture_begin || n->kind == node_kind::capture_end) n = n->next;
  return reads_one_unit(n) ? n : nullptr;
}

void build_nfa_visitor::visit(parse_tree::repeat_data const& d) {
  if (!d.content) return;
  auto const max = d.max < 0 ? repeat_data::no_limit : static_cast<std::uint32_t>(d.max);
  auto* const repeat = make<repeat_node>(
      repeat_data{d.min, max, d.greedy, false, reverse_, 0, nullptr, nullptr}, current_);
  current_ = repeat;
  d.content->accept(*this);
  repeat->content = std::exchange(current_, repeat);
  repeat->single = reads_one_unit(repeat->content) && repeat->content->next == repeat;
  if (!repeat->single) {
    repeat->counter = out_.counter_count++;
  } else if (!reverse_) {
    repeat->follow = reader_of_next_unit(repeat->next);
  }
}

void build_nfa_visitor::visit(parse_tree::or_data const& d) {
  // Alternatives nest to the right, as many as the pattern has: a loop, not a recursion.
  nfa_node* const next = current_;
  std::vector<nfa_node*> starts;
  parse_tree::or_data const* rest = &d;
  for (;;) {
    starts.push_back(build(rest->left, next));
    auto const* const tail =
        dynamic_cast<parse_tree::template_node<parse_tree::or_data> const*>(rest->right.head);
    if (!tail) break;
    rest = &tail->data;
  }
  nfa_node* start = build(rest->right, next);
  for (; !starts.empty(); starts.pop_back()) {
    start = make<or_node>(or_data{start}, starts.back());
  }
  current_ = start;
}

void build_nfa_visitor::visit(parse_tree::condition_data const& d) {
  nfa_node* const next = current_;
  nfa_node* const if_set = build(d.if_set, next);
  nfa_node* const if_unset = build(d.if_unset, next);
  current_ = make<condition_node>(condition_data{d.group, if_unset}, if_set);
}

void build_nfa_visitor::visit(parse_tree::group_data const& d) {
  switch (d.type) {
    case group_type::options:
      return build_options(d);
    case group_type::capture:
      return build_capture(d);
    case group_type::look_ahead:
    case group_type::look_behind:
    case group_type::negative_look_ahead:
    case group_type::negative_look_behind:
      return build_look_around(d);
    case group_type::no_backtrack:
      return build_no_backtrack(d);
    case group_type::recursion:
      return build_recursion();
    case group_type::condition:
      break;
  }
  report("skipping unknown group type: " + std::to_string(static_cast<int>(d.type)));
}

void build_nfa_visitor::build_options(parse_tree::group_data const& d) {
  flags const outer = flags_;
  auto const change = [&](bool& value, parse_tree::option bit) {
    value = (value || (d.options & bit)) && !(d.options & bit << parse_tree::clear_shift);
  };
  change(flags_.ignore_case, parse_tree::ignore_case);
  change(flags_.dot_matches_newline, parse_tree::dot_matches_newline);

  // Only what really changes is changed and changed back, so that "(?i:a(?i:b)c)" ignores case in
  // "c".
  auto const switch_flags = [&](flags const& from, flags const& to) {
    if (from.ignore_case != to.ignore_case) {
      current_ =
          make<change_flag_node>(change_flag_data{flag::ignore_case, to.ignore_case}, current_);
    }
    if (from.dot_matches_newline != to.dot_matches_newline) {
      current_ = make<change_flag_node>(
          change_flag_data{flag::dot_matches_newline, to.dot_matches_newline}, current_);
    }
  };
  switch_flags(flags_, outer);
  current_ = build(d.content, current_);
  switch_flags(outer, flags_);
  flags_ = outer;
}

void build_nfa_visitor::build_capture(parse_tree::group_data const& d) {
  if (d.number >= max_groups) {
    current_ = build(d.content, current_);
    return;
  }
  out_.group_count = std::max(out_.group_count, d.number + 1);
  auto const begin = [&] {
    current_ = make<capture_begin_node>(capture_begin_data{d.number, reverse_}, current_);
  };
  auto const end = [&] {
    current_ = make<capture_end_node>(capture_end_data{d.number, reverse_}, current_);
  };
  reverse_ ? begin() : end();
  current_ = build(d.content, current_);
  reverse_ ? end() : begin();
}

void build_nfa_visitor::build_look_around(parse_tree::group_data const& d) {
  bool const is_look_behind =
      d.type == group_type::look_behind || d.type == group_type::negative_look_behind;
  auto* const look = make<look_around_node>(look_around_data{d.type, nullptr}, current_);
  look->content = build_content(d.content, look, is_look_behind);
  current_ = look;
}

void build_nfa_visitor::build_no_backtrack(parse_tree::group_data const& d) {
  auto* const group = make<no_backtrack_node>(no_backtrack_data{nullptr}, current_);
  group->content = build_content(d.content, group, reverse_);
  current_ = group;
}

void build_nfa_visitor::build_recursion() {
  auto* const end = make<recursion_end_node>(
      recursion_end_data{flags_.ignore_case, flags_.dot_matches_newline}, current_);
  auto* const begin = make<recursion_begin_node>(recursion_begin_data{end, reverse_}, nullptr);
  recursions_.push_back(begin);
  current_ = begin;
}

}  // namespace regex
