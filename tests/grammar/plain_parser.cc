#include "grammar/plain_parser.h"

#include <algorithm>

#include "grammar/back_references.h"
#include "platform/utf.h"

using namespace grammar;

std::vector<token> plain_parser::parse_line(std::u16string const& line, bool is_last) {
  line_.set(line, is_last);
  tokens_.clear();
  position_ = 0;
  for (region& r : stack_) {
    r.dropped.clear();
    r.opened_at = ~0u;
    r.inside = 0;
  }
  tokens_.set(0, content_of_top());
  candidate best;
  for (std::size_t number;;) {
    line_.set(line, is_last);
    auto const end = cut_at_first_end();
    if (find(best, number))
      take(best, number);
    else if (end)
      close_at_first_end(end->first, end->second);
    else
      return tokens_.tokens();
  }
}

// Leaves what the innermost region sees of the line. Tells the region that ends there.
std::optional<std::pair<std::size_t, plain_parser::candidate>> plain_parser::cut_at_first_end() {
  std::optional<std::pair<std::size_t, candidate>> innermost;
  std::size_t references = 0;
  for (std::size_t depth = 1; depth < stack_.size(); ++depth) {
    region const& r = stack_[depth];
    candidate end{kind::end, r.owner, r.base, r.path, r.owner->end.get(), {}};
    if (r.owner->has_back_references) end.nfa = references_[references++].get();
    if (!r.owner->apply_end_pattern_first || end.nfa == nullptr) continue;
    auto const result = end.nfa->search(line_, r.inside, end.match);
    gave_up_ |= result == pattern::result::gave_up;
    if (result != pattern::result::found) continue;
    line_.cut(end.match.begin());
    innermost = {depth, end};
  }
  return innermost;
}

void plain_parser::close_at_first_end(std::size_t depth, candidate const& end) {
  for (std::size_t i = stack_.size() - 1; i > depth; --i) {
    if (stack_[i].owner->has_back_references) references_.pop_back();
    stack_.pop_back();
  }
  take(end, 0);
}

plain_parser::path_id plain_parser::content_of_top() {
  region const& top = stack_.back();
  if (!top.owner->end.is_set() || !top.owner->has_content_name()) return top.path;
  return paths_.child(top.path, modulo_for_rule(*top.owner) - 1);
}

void plain_parser::collect(std::vector<candidate>& rules, rule const& owner, rule const& base,
                           path_id path, std::set<std::pair<rule const*, rule const*>>& collected) {
  if (!collected.emplace(&owner, &base).second) return;
  auto const add_end = [&] {
    pattern const* nfa = owner.end.is_set() ? owner.end.get() : nullptr;
    if (owner.has_back_references) nfa = references_.empty() ? nullptr : references_.back().get();
    rules.push_back({kind::end, &owner, &base, stack_.back().path, nfa, {}});
  };
  path_id inside = path;
  if (owner.end.is_set() && owner.has_content_name())
    inside = paths_.child(path, modulo_for_rule(owner) - 1);
  bool const is_region = collected.size() == 1;
  bool const goes_first = is_region && owner.apply_end_pattern_first;
  if (!owner.apply_end_pattern_last && !goes_first) add_end();
  for (unsigned i = 0; i < owner.patterns.size(); ++i) {
    rule const* new_base = nullptr;
    rule const* const found =
        rule_at_index(owner, i, all_rules_, &all_rules_.root(0), &base, new_base);
    if (found == nullptr || found->disabled) continue;
    path_id const below = paths_.child(inside, i);
    if (new_base)
      collect(rules, *found, *new_base, below, collected);
    else if (lazy_pattern const* const opening = found->opening())
      rules.push_back({kind::opening, found, &base, below, opening->get(), {}});
  }
  if (owner.apply_end_pattern_last && !goes_first) add_end();
  if (owner.swallow.is_set())
    rules.push_back({kind::swallow, &owner, &base, path, owner.swallow.get(), {}});
}

bool plain_parser::find(candidate& best, std::size_t& number) {
  region const& top = stack_.back();
  std::vector<candidate> rules;
  std::set<std::pair<rule const*, rule const*>> collected;
  collect(rules, *top.owner, *top.base, top.path, collected);
  bool found = false;
  for (std::size_t i = 0; i < rules.size(); ++i) {
    candidate& rule = rules[i];
    if (rule.nfa == nullptr || top.dropped.contains(i)) continue;
    auto const result = rule.nfa->search(line_, position_, rule.match);
    gave_up_ |= result == pattern::result::gave_up;
    if (result != pattern::result::found) continue;
    if (found && rule.match.begin() >= best.match.begin()) continue;
    best = rule;
    number = i;
    found = true;
  }
  return found;
}

void plain_parser::take(candidate const& taken, std::size_t number) {
  rule const& owner = *taken.owner;
  region& top = stack_.back();
  if (taken.type == kind::end && stack_.size() > 1) {
    if (owner.has_back_references) references_.pop_back();
    store(taken, owner.end_captures, owner.patterns.size() + owner.begin_captures.size());
    position_ = taken.match.end();
    bool const was_empty = top.opened_at == position_;
    rule const* const closed = top.owner;
    stack_.pop_back();
    tokens_.set(position_, content_of_top());
    if (!was_empty) return;
    std::vector<candidate> rules;
    std::set<std::pair<rule const*, rule const*>> collected;
    region& outer = stack_.back();
    collect(rules, *outer.owner, *outer.base, outer.path, collected);
    for (std::size_t i = 0; i < rules.size(); ++i)
      if (rules[i].type == kind::opening && rules[i].owner == closed) outer.dropped.insert(i);
  } else if (taken.type == kind::opening && owner.end.is_set()) {
    auto const is_same = [&](region const& r) {
      return r.owner == &owner && r.opened_at == taken.match.begin();
    };
    if (stack_.size() >= 2000 ||
        (taken.match.empty() && std::any_of(stack_.begin(), stack_.end(), is_same))) {
      top.dropped.insert(number);
      return;
    }
    store(taken, owner.begin_captures, owner.patterns.size());
    position_ = taken.match.end();
    std::string reason;
    if (owner.has_back_references)
      references_.emplace_back(
          expand_back_references(unicode::to_utf16(owner.end.source()), line_.units(), taken.match),
          reason);
    stack_.push_back({&owner, taken.base, taken.path, {}, taken.match.begin(), taken.match.end()});
    if (owner.has_content_name()) tokens_.set(position_, content_of_top());
  } else {
    if (taken.type == kind::opening) store(taken, owner.begin_captures, owner.patterns.size());
    position_ = taken.match.end();
    if (taken.type == kind::opening) tokens_.set(position_, content_of_top());
    if (taken.match.empty() || taken.type == kind::end) top.dropped.insert(number);
  }
}

void plain_parser::store(candidate const& taken, std::vector<capture> const& captures,
                         std::size_t base_index) {
  tokens_.set(taken.match.begin(), taken.path);
  std::vector<std::pair<unsigned, path_id>> pending;
  path_id current = taken.path;
  auto const close_until = [&](unsigned column) {
    for (; !pending.empty() && pending.back().first <= column; pending.pop_back())
      tokens_.set(pending.back().first, current = pending.back().second);
  };
  for (std::size_t i = 0; i < captures.size(); ++i) {
    if (!taken.match.is_set(captures[i].group)) continue;
    auto const [first, last] = taken.match.groups[static_cast<std::size_t>(captures[i].group)];
    unsigned const begin = std::max(static_cast<unsigned>(first), taken.match.begin());
    unsigned const end = std::min(static_cast<unsigned>(last), taken.match.end());
    if (begin > end) continue;
    close_until(begin);
    pending.emplace_back(end, current);
    current = paths_.child(current, static_cast<unsigned>(base_index + i));
    tokens_.set(begin, current);
  }
  close_until(~0u);
}
