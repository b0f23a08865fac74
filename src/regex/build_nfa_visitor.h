#pragma once

#include "regex/nfa.h"

namespace regex {

/// Compiles a list of parse nodes to a graph, from the back to the front, so that each node knows
/// where to continue. The C++ stack is used in proportion to the nesting, which the parser limits.
class build_nfa_visitor final : private parse_tree::visitor {
 public:
  explicit build_nfa_visitor(nfa_graph& out) : out_(out) {}

  void build_pattern(parse_tree::node_list const& pattern);

 private:
  struct flags {
    bool ignore_case = false, dot_matches_newline = false;
  };

  void visit(parse_tree::literal_data const&) override;
  void visit(parse_tree::class_data const&) override;
  void visit(parse_tree::range_data const&) override;
  void visit(parse_tree::anchor_data const&) override;
  void visit(parse_tree::backreference_data const&) override;
  void visit(parse_tree::repeat_data const&) override;
  void visit(parse_tree::group_data const&) override;
  void visit(parse_tree::or_data const&) override;
  void visit(parse_tree::condition_data const&) override;

  void build_options(parse_tree::group_data const&);
  void build_capture(parse_tree::group_data const&);
  void build_look_around(parse_tree::group_data const&);
  void build_no_backtrack(parse_tree::group_data const&);
  void build_recursion();

  /// The start of the list's nodes, the last of which continues at `next`.
  graph::nfa_node* build(parse_tree::node_list const& list, graph::nfa_node* next);
  graph::nfa_node* build_content(parse_tree::node_list const& list, graph::nfa_node* owner,
                                 bool reverse);
  template <class Node, class Data>
  Node* make(Data data, graph::nfa_node* next);

  nfa_graph& out_;
  graph::nfa_node* current_ = nullptr;  // goes on here; a visit puts its own start in place
  bool reverse_ = false;
  flags flags_;
  std::vector<graph::recursion_begin_node*> recursions_;
};

}  // namespace regex
