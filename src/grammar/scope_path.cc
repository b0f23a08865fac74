#include "grammar/scope_path.h"

#include <algorithm>

namespace grammar {

path_walker::step path_walker::descend(unsigned index) {
  if (is_content_name(*rule, index)) return step::content_name;
  if (index >= rule->patterns.size()) return step::capture;
  struct rule const* new_base = nullptr;
  struct rule const* const child = rule_at_index(*rule, index, *all_rules, root, base, new_base);
  if (child == nullptr) return step::nowhere;
  rule = child;
  if (new_base == nullptr) return step::rule;
  base = new_base;
  return step::included;
}

namespace {

// What a step adds to the scopes, "" for nothing; `from` is the rule on which it was made.
std::string const& added_scope(path_walker::step step, rule const& from, rule const& to,
                               unsigned index) {
  static std::string const none;
  switch (step) {
    case path_walker::step::content_name:
      return *from.content_name;
    case path_walker::step::capture:
      return capture_at_index(from, index).name;
    case path_walker::step::rule:
      return to.scope();
    default:
      return none;
  }
}

void add_name(std::vector<std::string>& scopes, std::string const& name) {
  if (!name.empty()) scopes.push_back(name);
}

}  // namespace

std::vector<std::string> expand_bit_stack(bit_stack::storage const& stack,
                                          catalogue const& all_rules, unsigned start_rule) {
  path_walker walker(all_rules, start_rule);
  std::vector<std::string> scopes;
  add_name(scopes, walker.root->scope());
  for (bit_stack::reader reader(stack); !reader.empty();) {
    rule const& from = *walker.rule;
    unsigned const index = reader.pop(modulo_for_rule(from));
    auto const step = walker.descend(index);
    add_name(scopes, added_scope(step, from, *walker.rule, index));
  }
  return scopes;
}

bit_stack::storage intersect_bit_stack(bit_stack::storage const& a, bit_stack::storage const& b,
                                       catalogue const& all_rules, unsigned start_rule) {
  path_walker walker(all_rules, start_rule);
  bit_stack::builder common;
  bit_stack::reader first(a), second(b);
  while (!first.empty() && !second.empty()) {
    unsigned const modulo = modulo_for_rule(*walker.rule);
    unsigned const index = first.pop(modulo);
    if (second.pop(modulo) != index) break;
    common.push(index, modulo);
    walker.descend(index);
  }
  return bit_stack::storage(common);
}

path_tree::path_tree(catalogue const& all_rules, unsigned start_rule)
    : start_(all_rules, start_rule) {
  nodes_.push_back({0, 0, path_walker::step::rule, start_.root, start_.root});
}

path_tree::id path_tree::child(id parent, unsigned index) {
  std::lock_guard lock(mutex_);
  auto const [it, added] = children_.try_emplace(std::uint64_t{parent} << 32 | index, 0);
  if (!added) return it->second;
  path_walker walker = start_;
  walker.rule = nodes_[parent].owner;
  walker.base = nodes_[parent].base;
  auto const step = walker.descend(index);
  nodes_.push_back({parent, index, step, walker.rule, walker.base});
  return it->second = static_cast<id>(nodes_.size() - 1);
}

std::size_t path_tree::size() const {
  std::lock_guard lock(mutex_);
  return nodes_.size();
}

path_tree::node path_tree::at(id path) const {
  std::lock_guard lock(mutex_);
  return nodes_[path];
}

std::vector<path_tree::id> path_tree::ancestors(id of) const {
  std::vector<id> result;
  for (; of != 0; of = nodes_[of].parent) result.push_back(of);
  std::reverse(result.begin(), result.end());
  return result;
}

bit_stack::storage path_tree::path(id of) const {
  std::lock_guard lock(mutex_);
  bit_stack::builder builder;
  for (id const step : ancestors(of))
    builder.push(nodes_[step].index, modulo_for_rule(*nodes_[nodes_[step].parent].owner));
  return bit_stack::storage(builder);
}

std::vector<std::string> path_tree::scopes(id of) const {
  std::lock_guard lock(mutex_);
  std::vector<std::string> scopes;
  add_name(scopes, start_.root->scope());
  for (id const step : ancestors(of)) add_name(scopes, scope_of_step(step));
  return scopes;
}

std::string const& path_tree::scope_of_step(id of) const {
  node const& made = nodes_[of];
  return added_scope(made.step, *nodes_[made.parent].owner, *made.owner, made.index);
}

std::string const& path_tree::last_scope(id of) const {
  std::lock_guard lock(mutex_);
  return of == 0 ? start_.root->scope() : scope_of_step(of);
}

}  // namespace grammar
