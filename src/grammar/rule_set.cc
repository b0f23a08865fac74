#include "grammar/rule_set.h"

#include <algorithm>

namespace grammar {
namespace {

/// Rules that one region may include, each counted as often as it is.
constexpr unsigned max_candidates = 20000;
/// How deep groups may include each other.
constexpr std::size_t max_groups = 256;

bool any_group(std::vector<capture> const& captures) {
  return std::any_of(captures.begin(), captures.end(),
                     [](capture const& c) { return c.group != 0; });
}

}  // namespace

void wanted::find_needs() {
  needs_groups = type == kind::opening
                     ? owner->has_back_references || any_group(owner->begin_captures)
                     : type == kind::end && any_group(owner->end_captures);
}

rule_set& rule_sets::of(rule const& owner, rule const& base) {
  region_key const key(&owner, &base);
  auto const [it, added] = sets_.try_emplace(key);
  rule_set& made = it->second;
  if (!added) return made;
  collected_.clear();
  collect(made.rules, key, {});
  std::vector<std::optional<std::u16string_view>> sources;
  for (wanted& what : made.rules) {
    what.find_needs();
    if (what.is_sought()) {
      made.sought.push_back(static_cast<std::uint16_t>(sources.size()));
      sources.push_back(std::nullopt);
    } else {
      sources.push_back(what.nfa->source());
    }
  }
  made.filter = std::make_unique<rule_filter>(sources);
  if (owner.apply_end_pattern_first) find_first_end(made, key);
  return made;
}

void rule_sets::collect(std::vector<wanted>& rules, region_key const& of,
                        std::vector<unsigned> steps) {
  // A group that was collected adds nothing: what it has comes first already.
  if (!collected_.insert(of).second) return;
  being_collected_.push_back(of);
  auto const [owner, base] = of;
  if (owner->end.is_set() && owner->has_content_name())
    steps.push_back(modulo_for_rule(*owner) - 1);
  if (!owner->apply_end_pattern_last) collect_end(rules, of);
  for (unsigned i = 0; i < owner->patterns.size() && rules.size() < max_candidates; ++i) {
    rule const* new_base = nullptr;
    rule const* const child = rule_at_index(*owner, i, all_rules_, root_, base, new_base);
    if (child == nullptr || child->disabled) continue;
    std::vector<unsigned> below = steps;
    below.push_back(i);
    if (new_base) {
      if (may_collect({child, new_base}, *owner->patterns[i]))
        collect(rules, {child, new_base}, std::move(below));
    } else if (lazy_pattern const* const opening = child->opening()) {
      rules.push_back(
          {wanted::kind::opening, child, base, std::move(below), opening->get(), opening});
    }
  }
  if (owner->apply_end_pattern_last) collect_end(rules, of);
  if (pattern const* const swallow = owner->swallow.get())
    rules.push_back({wanted::kind::swallow, owner, base, {}, swallow, &owner->swallow});
  being_collected_.pop_back();
}

// A group within itself would never end, and a long chain of groups as deep as the stack.
bool rule_sets::may_collect(region_key const& group, rule const& entry) const {
  auto const& open = being_collected_;
  if (std::find(open.begin(), open.end(), group) != open.end()) {
    all_rules_.tell(entry.place, entry.include + " includes itself");
    return false;
  }
  if (open.size() < max_groups) return true;
  all_rules_.tell(entry.place, "groups include each other too deeply");
  return false;
}

void rule_sets::collect_end(std::vector<wanted>& rules, region_key const& of) {
  bool const is_region = being_collected_.size() == 1;
  if (is_region && of.first->apply_end_pattern_first) return;
  if (auto end = end_of(of)) rules.push_back(std::move(*end));
}

std::optional<wanted> rule_sets::end_of(region_key const& of) {
  rule const& owner = *of.first;
  pattern const* const nfa = owner.has_back_references ? nullptr : owner.end.get();
  if (!nfa && !owner.has_back_references) return {};
  return wanted{wanted::kind::end, &owner, of.second, {}, nfa, &owner.end};
}

void rule_sets::find_first_end(rule_set& set, region_key const& of) {
  set.first_end = end_of(of);
  if (!set.first_end) return;
  set.first_end->find_needs();
  if (set.first_end->is_sought()) return;
  std::u16string_view const source = set.first_end->nfa->source();
  set.first_end_filter =
      std::make_unique<rule_filter>(std::vector<std::optional<std::u16string_view>>{source});
}

}  // namespace grammar
