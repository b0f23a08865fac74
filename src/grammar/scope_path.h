#pragma once

#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "grammar/bit_stack.h"
#include "grammar/rule.h"

/// Scope paths: which rule is active at a place, as the way there from the grammar's root. Element
/// n of a path is the number of a child of the rule that the elements before it lead to.
namespace grammar {

/// Follows a path through a grammar.
struct path_walker {
  enum class step { content_name, capture, included, rule, nowhere };

  path_walker(catalogue const& all_rules, unsigned start_rule)
      : all_rules(&all_rules), root(&all_rules.root(start_rule)), rule(root), base(root) {}

  /// Goes on to child `index`; a capture or a content name stays on the rule.
  step descend(unsigned index);

  catalogue const* all_rules;
  struct rule const* root;
  struct rule const* rule;
  struct rule const* base;  ///< the grammar in which references of `rule` are looked up
};

/// The names of the scopes on a path, outermost first.
std::vector<std::string> expand_bit_stack(bit_stack::storage const& stack,
                                          catalogue const& all_rules, unsigned start_rule);

/// The longest path with which both begin.
bit_stack::storage intersect_bit_stack(bit_stack::storage const& a, bit_stack::storage const& b,
                                       catalogue const& all_rules, unsigned start_rule);

/// The paths that occur in one view, each with a small number, so that a token takes eight bytes
/// however deep it stands, and paths compare as numbers. The number 0 is the empty path. Numbers
/// stay good as long as the tree. Any thread.
class path_tree {
 public:
  using id = std::uint32_t;

  struct node {
    id parent;
    unsigned index;
    path_walker::step step;
    rule const* owner;
    rule const* base;
    bool is_region() const { return step == path_walker::step::rule; }
  };

  path_tree(catalogue const& all_rules, unsigned start_rule);

  /// The numbers given so far.
  std::size_t size() const;
  id child(id parent, unsigned index);
  node at(id path) const;
  bit_stack::storage path(id of) const;
  std::vector<std::string> scopes(id of) const;
  /// The name of the scope that the path has beside those of its parent; "" for none. The
  /// grammar's, and good as long as that.
  std::string const& last_scope(id of) const;

 private:
  std::vector<id> ancestors(id of) const;
  std::string const& scope_of_step(id of) const;

  path_walker start_;
  mutable std::mutex mutex_;
  std::deque<node> nodes_;
  std::unordered_map<std::uint64_t, id> children_;
};

}  // namespace grammar
