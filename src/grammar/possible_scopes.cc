#include "grammar/possible_scopes.h"

#include <algorithm>

#include "grammar/scope_selector.h"

namespace grammar {
namespace {

class collector {
 public:
  explicit collector(catalogue const& all_rules) : all_rules_(all_rules) {}

  void add_grammar(rule const& root) {
    if (seen_.insert(&root).second) add(root);
  }

  std::set<std::string> names;

 private:
  void add(rule const& of) {
    names.insert(of.scope());
    names.insert(of.content_name.value_or(""));
    for (auto const* captures : {&of.begin_captures, &of.end_captures})
      for (capture const& c : *captures) names.insert(c.name);
    for (auto const& inner : of.patterns)
      if (inner) add(*inner);
    for (auto const& [name, inner] : of.repository)
      if (inner) add(*inner);
    // Others stand for a rule of a grammar that is in any case walked through.
    if (!of.include.empty() && of.include[0] != '$' && of.include[0] != '#')
      if (rule const* const other = all_rules_.rule_named(of.include, of.place))
        add_grammar(*other);
  }

  catalogue const& all_rules_;
  std::set<rule const*> seen_;
};

}  // namespace

std::set<std::string> possible_scopes(catalogue const& all_rules, unsigned start_rule) {
  collector found(all_rules);
  if (start_rule < all_rules.size()) found.add_grammar(all_rules.root(start_rule));
  found.names.erase("");
  return std::move(found.names);
}

}  // namespace grammar

namespace scope {
namespace {

bool may_match(selector_node const& node, std::set<std::string> const& scopes) {
  auto const may = [&](selector_node const& child) { return may_match(child, scopes); };
  switch (node.type) {
    case selector_node::any_of:
      return std::any_of(node.children.begin(), node.children.end(), may);
    case selector_node::all_of:
      return std::all_of(node.children.begin(), node.children.end(), may);
    case selector_node::difference:
      return may(node.children.front());
    default:
      return std::all_of(node.parts.begin(), node.parts.end(), [&](std::string const& part) {
        return std::any_of(scopes.begin(), scopes.end(), [&](std::string const& name) {
          return compare_selector::match_part(part, name);
        });
      });
  }
}

}  // namespace

bool may_apply(std::string const& selector, std::set<std::string> const& scopes) {
  auto const parsed = parse_selector(selector, nullptr);
  return parsed && may_match(*parsed, scopes);
}

}  // namespace scope
