#include "grammar/selector_set.h"

#include <algorithm>

#include "grammar/selector_score.h"

namespace scope {

selector_set::selector_set(std::vector<std::shared_ptr<selector_node const>> const& selectors) {
  expression const nowhere{selector_node::any_of, 0, {}};
  for (auto const& selector : selectors)
    selectors_.push_back(selector ? compiled(*selector) : nowhere);
}

selector_set::expression selector_set::compiled(selector_node const& node) {
  expression result{node.type, 0, {}};
  for (std::string const& part : node.parts) {
    auto const next = static_cast<std::uint32_t>(chains_.size());
    auto const [known, is_new] = following_.try_emplace({result.chain, part}, next);
    if (is_new) {
      chains_.push_back({result.chain, static_cast<std::uint32_t>(part.size())});
      chains_by_part_[part].push_back(next);
    }
    result.chain = known->second;
  }
  for (selector_node const& child : node.children) result.children.push_back(compiled(child));
  return result;
}

// A part matches a scope that it is, or that continues with a dot after it.
std::vector<std::uint32_t> const& selector_set::chains_ending_on(std::string_view scope) {
  auto const [known, is_new] = chains_by_scope_.try_emplace(std::string(scope));
  std::vector<std::uint32_t>& result = known->second;
  if (!is_new) return result;
  for (std::size_t end = 0; end <= scope.size(); ++end) {
    if (end < scope.size() && scope[end] != '.') continue;
    auto const found = chains_by_part_.find(std::string(scope.substr(0, end)));
    if (found != chains_by_part_.end())
      result.insert(result.end(), found->second.begin(), found->second.end());
  }
  std::sort(result.begin(), result.end());
  return result;
}

void selector_set::enter(std::string_view scope, state& at) {
  double const less = decay(scope.size());
  auto const score_outside = [&](std::uint32_t chain) {
    if (chain == 0) return 0.0;
    auto const found = std::lower_bound(at.begin(), at.end(), chain,
                                        [](partial const& p, auto c) { return p.chain < c; });
    return found != at.end() && found->chain == chain ? found->score : no_match;
  };
  entered_.clear();
  auto next = at.begin();
  for (std::uint32_t const chain : chains_ending_on(scope)) {
    double const outside = score_outside(chains_[chain].before);
    if (outside < 0.0) continue;
    for (; next != at.end() && next->chain < chain; ++next)
      entered_.push_back({next->chain, next->score / less});
    if (next != at.end() && next->chain == chain) ++next;
    entered_.push_back(
        {chain, score_of_part(chains_[chain].length, scope.size()) + outside / less});
  }
  for (; next != at.end(); ++next) entered_.push_back({next->chain, next->score / less});
  at = entered_;
}

selector_set::scores::scores(selector_set const& set, state const& at)
    : set_(set), chains_(set.chains_.size(), no_match) {
  chains_[0] = 0.0;
  for (partial const& each : at) chains_[each.chain] = each.score;
}

double selector_set::scores::of(expression const& node) const {
  double result = no_match;
  switch (node.type) {
    case selector_node::descent:
      return chains_[node.chain];
    case selector_node::any_of:
      for (expression const& child : node.children) result = std::max(result, of(child));
      return result;
    case selector_node::all_of:
      for (expression const& child : node.children) {
        double const other = of(child);
        if (other < 0.0) return no_match;
        result = std::max(result, other);
      }
      return result;
    case selector_node::difference:
      for (std::size_t i = 1; i < node.children.size(); ++i)
        if (!(of(node.children[i]) < 0.0)) return no_match;
      return of(node.children.front());
  }
  return no_match;
}

}  // namespace scope
