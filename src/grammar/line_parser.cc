#include "grammar/line_parser.h"

#include <algorithm>
#include <cstdio>

#include "grammar/back_references.h"
#include "platform/utf.h"

namespace grammar {
namespace {

/// Regions open at once; more are matched without being opened.
constexpr std::size_t max_regions = 2000;
/// Rules that one region may include, each counted as often as it is.
constexpr unsigned max_candidates = 20000;

}  // namespace

nfa_wrapper::nfa_wrapper(std::u16string source) {
  std::string reason;
  std::string const text = unicode::to_utf8(source);
  pattern_ = pattern::compile(std::move(source), reason);
  if (!pattern_)
    std::fprintf(stderr, "Quirnote regular expression error\nError: %s for pattern %s\n",
                 reason.c_str(), text.c_str());
}

bool operator==(nfa_wrapper const& a, nfa_wrapper const& b) {
  if (!a.pattern_ || !b.pattern_) return a.pattern_ == b.pattern_;
  return a.pattern_ == b.pattern_ || a.pattern_->source() == b.pattern_->source();
}

line_parser::line_parser(std::shared_ptr<catalogue const> all_rules, unsigned start_rule,
                         std::shared_ptr<path_tree> paths)
    : all_rules_(std::move(all_rules)),
      root_(&all_rules_->root(start_rule)),
      paths_(std::move(paths)) {
  setup_stack(0);
}

void line_parser::setup_stack(path_tree::id path) {
  stack_.clear();
  for (path_tree::id id = path;; id = paths_->at(id).parent) {
    path_tree::node const node = paths_->at(id);
    if (node.is_region()) stack_.push_back({node.base, id, node.owner, {}});
    if (id == 0) break;
  }
  std::reverse(stack_.begin(), stack_.end());
}

path_tree::id line_parser::content_path(rule const& owner, path_tree::id path) const {
  return owner.has_content_name() ? paths_->child(path, modulo_for_rule(owner) - 1) : path;
}

path_tree::id line_parser::top_path() const {
  region const& top = stack_.back();
  return top.owner->end.is_set() ? content_path(*top.owner, top.path) : top.path;
}

void line_parser::search(std::uint32_t position, region& node, candidate found, unsigned order) {
  auto const result = found.nfa->search(line_, position, found.match);
  if (result == pattern::result::gave_up) found.what->named->tell_given_up();
  if (result != pattern::result::found) return;
  order_key const key{found.match.begin(), order};
  node.matches.insert_or_assign(key, std::move(found));
}

void line_parser::apply_rules(std::uint32_t position, region& node) {
  rule_set const& rules = rules_of({node.owner, node.base});
  for (unsigned order = 0; order < rules.size(); ++order) {
    pattern const* nfa = rules[order].nfa;
    if (nfa == nullptr && !references_->empty()) nfa = references_->back().get();
    if (nfa) search(position, node, {&rules[order], nfa, {}}, order);
  }
}

line_parser::rule_set const& line_parser::rules_of(region_key const& of) {
  auto const [it, added] = rule_sets_.try_emplace(of);
  if (added) {
    collected_.clear();
    collect(it->second, of, {});
  }
  return it->second;
}

void line_parser::collect(rule_set& rules, region_key const& of, std::vector<unsigned> steps) {
  // A group that was collected, or is just being, adds nothing: what it has comes first already.
  if (!collected_.insert(of).second) return;
  rule const& owner = *of.first;
  if (owner.end.is_set() && owner.has_content_name()) steps.push_back(modulo_for_rule(owner) - 1);
  if (!owner.apply_end_pattern_last) collect_end(rules, owner);
  for (unsigned i = 0; i < owner.patterns.size() && rules.size() < max_candidates; ++i) {
    rule const* new_base = nullptr;
    rule const* const child = rule_at_index(owner, i, *all_rules_, root_, of.second, new_base);
    if (child == nullptr || child->disabled) continue;
    std::vector<unsigned> below = steps;
    below.push_back(i);
    if (new_base) {
      collect(rules, {child, new_base}, std::move(below));
    } else if (lazy_pattern const* const opening = child->opening()) {
      rules.push_back({kind::opening, child, std::move(below), opening->get(), opening});
    }
  }
  if (owner.apply_end_pattern_last) collect_end(rules, owner);
  if (pattern const* const swallow = owner.swallow.get())
    rules.push_back({kind::swallow, &owner, {}, swallow, &owner.swallow});
}

void line_parser::collect_end(rule_set& rules, rule const& owner) {
  pattern const* const nfa = owner.has_back_references ? nullptr : owner.end.get();
  if (nfa || owner.has_back_references) rules.push_back({kind::end, &owner, {}, nfa, &owner.end});
}

bool line_parser::parse_line(std::u16string line, bool is_last, line_tokens& tokens,
                             reference_stack& references, std::atomic<bool> const& stop) {
  line_.set(std::move(line), is_last);
  tokens_ = &tokens;
  references_ = &references;
  position_ = 0;
  depth_ = stack_.size();
  for (region& node : stack_) {
    node.matches.clear();
    node.opened_at = ~0u;
  }
  tokens = line_tokens(top_path());
  apply_rules(0, stack_.back());

  while (!stack_.back().matches.empty()) {
    if (stop.load(std::memory_order_relaxed)) return false;
    auto& matches = stack_.back().matches;
    auto const first = matches.begin();
    if (first->first.begin < position_) {
      candidate again = std::move(first->second);
      unsigned const order = first->first.order;
      matches.erase(first);
      search(position_, stack_.back(), std::move(again), order);
    } else if (first->second.what->type == kind::opening) {
      take_opening(first);
    } else if (first->second.what->type == kind::end && stack_.size() > 1) {
      take_end(candidate(std::move(first->second)));
    } else {
      position_ = first->second.match.end();
      if (first->second.match.empty() || first->second.what->type == kind::end) {
        tell_zero_width(*first->second.what->owner);
        matches.erase(first);
      }
    }
  }
  return true;
}

void line_parser::take_end(candidate const& taken) {
  rule const& owner = *taken.what->owner;
  if (owner.has_back_references && !references_->empty()) references_->pop_back();
  store_path(taken.match, stack_.back().path, owner.end_captures,
             static_cast<unsigned>(owner.patterns.size() + owner.begin_captures.size()));
  position_ = taken.match.end();
  bool const was_empty = stack_.back().opened_at == position_;
  rule const* const closed = stack_.back().owner;
  stack_.pop_back();
  tokens_->set(position_, top_path());
  region& top = stack_.back();
  if (stack_.size() < depth_) {
    top.matches.clear();
    apply_rules(position_, top);
    depth_ = stack_.size();
  }
  if (!was_empty) return;
  // It would open and close here for ever.
  tell_zero_width(*closed);
  std::erase_if(top.matches, [&](auto const& match) {
    return match.second.what->owner == closed && match.second.what->type == kind::opening &&
           match.first.begin == position_;
  });
}

void line_parser::take_opening(std::map<order_key, candidate>::iterator taken) {
  candidate const& found = taken->second;
  rule const& owner = *found.what->owner;
  bool const opens = owner.end.is_set();
  if (opens && (stack_.size() >= max_regions ||
                (found.match.empty() && opened_here(owner, found.match.begin())))) {
    tell_zero_width(owner);
    stack_.back().matches.erase(taken);
    return;
  }
  path_tree::id path = stack_.back().path;
  for (unsigned const step : found.what->steps) path = paths_->child(path, step);
  store_path(found.match, path, owner.begin_captures, static_cast<unsigned>(owner.patterns.size()));
  position_ = found.match.end();
  if (opens) {
    if (owner.has_back_references)
      references_->push_back(nfa_wrapper(expand_back_references(
          unicode::to_utf16(owner.end.source()), line_.units(), found.match)));
    path_tree::node const node = paths_->at(path);
    if (owner.has_content_name()) tokens_->set(position_, content_path(owner, path));
    stack_.push_back({node.base, path, &owner, {}, found.match.begin()});
    apply_rules(position_, stack_.back());
    return;
  }
  tokens_->set(position_, top_path());
  if (!found.match.empty()) return;
  tell_zero_width(owner);
  stack_.back().matches.erase(taken);
}

bool line_parser::opened_here(rule const& owner, std::uint32_t position) const {
  for (auto node = stack_.rbegin(); node != stack_.rend() && node->opened_at == position; ++node)
    if (node->owner == &owner) return true;
  return false;
}

// Groups nest or stand apart, in the order of their numbers. What a group has outside of the match,
// which it may in a look-around, belongs to other rules.
void line_parser::store_path(match_groups const& match, path_tree::id path,
                             std::vector<capture> const& captures, unsigned base_index) {
  tokens_->set(match.begin(), path);
  struct waiting {
    std::uint32_t end;
    path_tree::id path;
  };
  std::vector<waiting> pending;
  path_tree::id current = path;
  auto const close_until = [&](std::uint32_t column) {
    for (; !pending.empty() && pending.back().end <= column; pending.pop_back()) {
      current = pending.back().path;
      tokens_->set(pending.back().end, current);
    }
  };
  for (std::size_t i = 0; i < captures.size(); ++i) {
    if (!match.is_set(captures[i].group)) continue;
    auto const range = match.groups[static_cast<std::size_t>(captures[i].group)];
    std::uint32_t const begin =
        std::max<std::uint32_t>(static_cast<std::uint32_t>(range.begin), match.begin());
    std::uint32_t const end =
        std::min<std::uint32_t>(static_cast<std::uint32_t>(range.end), match.end());
    if (begin > end) continue;
    close_until(begin);
    pending.push_back({end, current});
    current = paths_->child(current, base_index + static_cast<unsigned>(i));
    tokens_->set(begin, current);
  }
  close_until(~0u);
}

void line_parser::tell_zero_width(rule const& owner) {
  if (!told_.insert(&owner).second) return;
  std::fprintf(stderr, "Quirnote: zero width match %s\n",
               owner.name.empty() ? owner.match.source().c_str() : owner.name.c_str());
}

}  // namespace grammar
