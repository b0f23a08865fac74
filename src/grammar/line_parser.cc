#include "grammar/line_parser.h"

#include <algorithm>

#include "grammar/back_references.h"
#include "platform/utf.h"

namespace grammar {
namespace {

/// Regions open at once; more are matched without being opened.
constexpr std::size_t max_regions = 2000;
/// Attempts with a rule on one line that fail before it is searched for instead, so that a rule
/// that might match everywhere and looks far ahead each time takes no time by the line's square.
constexpr unsigned max_failures = 16;
/// Lines on which searching for a rule was given up, before it is left alone for good.
constexpr unsigned max_given_up = 10;
constexpr std::size_t max_expanded = 256;
constexpr unsigned child_bits = 11;

}  // namespace

nfa_wrapper::nfa_wrapper(std::u16string source, std::string& reason)
    : pattern_(pattern::compile(std::move(source), reason)) {}

bool operator==(nfa_wrapper const& a, nfa_wrapper const& b) {
  if (!a.pattern_ || !b.pattern_) return a.pattern_ == b.pattern_;
  return a.pattern_ == b.pattern_ || a.pattern_->source() == b.pattern_->source();
}

line_parser::line_parser(std::shared_ptr<catalogue const> all_rules, unsigned start_rule,
                         std::shared_ptr<path_tree> paths)
    : all_rules_(std::move(all_rules)),
      paths_(std::move(paths)),
      rule_sets_(*all_rules_, &all_rules_->root(start_rule)),
      children_(std::size_t{1} << child_bits) {
  setup_stack(0);
}

void line_parser::setup_stack(path_tree::id path) {
  stack_.clear();
  for (path_tree::id id = path;; id = paths_->at(id).parent) {
    path_tree::node const node = paths_->at(id);
    if (node.is_region()) stack_.push_back({node.base, id, node.owner, nullptr, {}, {}});
    if (id == 0) break;
  }
  std::reverse(stack_.begin(), stack_.end());
  first_ends_.clear();
  std::size_t references = 0;
  for (std::size_t depth = 1; depth < stack_.size(); ++depth) {
    rule const& owner = *stack_[depth].owner;
    if (owner.apply_end_pattern_first) first_ends_.push_back({depth, references});
    if (owner.has_back_references) ++references;
  }
}

path_tree::id line_parser::child(path_tree::id parent, unsigned index) {
  std::uint64_t const key = std::uint64_t{parent} << 32 | index;
  known_child& known = children_[key * 0x9e37'79b9'7f4a'7c15 >> (64 - child_bits)];
  if (known.key != key) known = {key, paths_->child(parent, index)};
  return known.path;
}

path_tree::id line_parser::content_path(rule const& owner, path_tree::id path) {
  return owner.has_content_name() ? child(path, modulo_for_rule(owner) - 1) : path;
}

path_tree::id line_parser::plain_path() {
  region const& top = stack_.back();
  return top.owner->end.is_set() ? content_path(*top.owner, top.path) : top.path;
}

// What is of no use any more is broken off too, and no fault of the rule.
void line_parser::give_up(wanted& what) {
  if (is_stopped()) return;
  what.named->tell_given_up();
  ++what.given_up;
}

bool line_parser::search(wanted& what, sought& found) {
  if (what.given_up >= max_given_up) return false;
  auto const result = found.nfa->search(line_, position_, found.match, stop_);
  if (result == pattern::result::gave_up) give_up(what);
  return result == pattern::result::found;
}

rule_set& line_parser::rules_of(region& node) {
  if (node.rules == nullptr) node.rules = &rule_sets_.of(*node.owner, *node.base);
  return *node.rules;
}

bool line_parser::is_plain(std::u16string_view units) {
  for (first_end const& end : first_ends_) {
    rule_set& around = rules_of(stack_[end.depth]);
    if (!around.first_end) continue;
    if (!around.first_end_filter || around.first_end_filter->may_match_in(units)) return false;
  }
  rule_set& set = rules_of(stack_.back());
  return set.sought.empty() && !set.filter->may_match_in(units);
}

void line_parser::apply_rules(region& node) {
  node.dropped.clear();
  node.found.clear();
  for (std::uint16_t const order : rules_of(node).sought) {
    wanted& what = node.rules->rules[order];
    pattern const* nfa = what.nfa;
    if (nfa == nullptr && !references_->empty()) nfa = references_->back().get();
    if (nfa == nullptr) continue;
    sought found{order, nfa, {}};
    if (search(what, found)) node.found.push_back(std::move(found));
  }
}

// Leaves what matches next from the position on in `taken_` and `match_`.
bool line_parser::find_next(region& node) {
  rule_set& set = *node.rules;
  std::u16string_view const units = line_.units();
  auto limit = static_cast<std::uint32_t>(units.size());
  for (auto it = node.found.begin(); it != node.found.end();) {
    if (it->match.begin() < position_ && !search(set.rules[it->order], *it)) {
      it = node.found.erase(it);
    } else {
      limit = std::min(limit, it->match.begin());
      ++it;
    }
  }
  auto const is_dropped = [&](std::uint16_t order) {
    return !node.dropped.empty() &&
           std::find(node.dropped.begin(), node.dropped.end(), order) != node.dropped.end();
  };
  for (std::uint32_t at = position_;; ++at) {
    at = static_cast<std::uint32_t>(set.filter->skip(units, at, limit));
    sought const* known = nullptr;
    for (sought const& found : node.found)
      if (known == nullptr && found.match.begin() == at) known = &found;
    // Between the halves of a pair nothing can begin.
    if (at < units.size() && (units[at] & 0xfc00) == 0xdc00) continue;
    for (std::uint16_t const order : set.filter->candidates(units, at)) {
      if (known && known->order < order) break;
      if (is_dropped(order)) continue;
      if (try_at(set.rules[order], at)) {
        taken_ = order;
        return true;
      }
      if (is_stopped()) return false;
    }
    if (known) {
      taken_ = known->order;
      match_ = known->match;
      return true;
    }
    if (at >= units.size()) return false;
  }
}

bool line_parser::try_at(wanted& what, std::uint32_t at) {
  if (what.given_up >= max_given_up) return false;
  auto& tried = what.tried;
  if (tried.text != text_) tried = {text_, 0, 0, false};
  if (tried.given_up || (tried.failed >= max_failures && !can_begin_at(what, at))) return false;
  auto const result = what.nfa->match(line_, at, what.needs_groups, match_);
  if (result == pattern::result::found) return true;
  ++tried.failed;
  if (result == pattern::result::gave_up) {
    tried.given_up = true;
    give_up(what);
  }
  return false;
}

bool line_parser::can_begin_at(wanted& what, std::uint32_t at) {
  auto& tried = what.tried;
  if (at <= tried.next) return at == tried.next;
  auto const result = what.nfa->search(line_, at, searched_, stop_);
  tried.next = result == pattern::result::found ? searched_.begin() : ~0u;
  if (result == pattern::result::gave_up) give_up(what);
  return at == tried.next;
}

bool line_parser::parse_line(std::u16string_view line, bool is_last, line_tokens& tokens,
                             reference_stack& references, std::atomic<bool> const& stop) {
  line_.set(line, is_last);
  text_ = ++texts_;
  references_ = &references;
  stop_ = &stop;
  position_ = 0;
  depth_ = stack_.size();
  for (region& node : stack_) node.opened_at = ~0u;
  tokens_.clear();
  tokens_.set(0, plain_path());
  for (first_end& end : first_ends_) search_first_end(end);
  apply_rules(stack_.back());

  do {
    while (find_next(stack_.back())) {
      if (is_stopped()) return false;
      wanted const& what = stack_.back().rules->rules[taken_];
      if (what.type == kind::opening) {
        take_opening();
      } else if (what.type == kind::end && stack_.size() > 1) {
        take_end();
      } else {
        position_ = match_.end();
        if (match_.empty() || what.type == kind::end) drop_empty();
      }
    }
    if (is_stopped()) return false;
  } while (take_first_end());
  tokens = line_tokens(tokens_);
  return true;
}

// It would match here for ever.
void line_parser::drop_empty() {
  stack_.back().rules->rules[taken_].named->tell_zero_width();
  drop_taken();
}

void line_parser::drop_taken() {
  region& top = stack_.back();
  top.dropped.push_back(taken_);
  std::erase_if(top.found, [&](sought const& found) { return found.order == taken_; });
}

void line_parser::take_end() {
  rule const& owner = *stack_.back().rules->rules[taken_].owner;
  if (owner.has_back_references && !references_->empty()) references_->pop_back();
  store_path(stack_.back().path, owner.end_captures,
             static_cast<unsigned>(owner.patterns.size() + owner.begin_captures.size()));
  close_region();
}

void line_parser::close_region() {
  position_ = match_.end();
  bool const was_empty = stack_.back().opened_at == position_;
  rule const* const closed = stack_.back().owner;
  stack_.pop_back();
  if (!first_ends_.empty() && first_ends_.back().depth == stack_.size()) {
    line_.cut(first_ends_.back().outer_size);
    text_ = first_ends_.back().outer_text;
    first_ends_.pop_back();
  }
  tokens_.set(position_, plain_path());
  region& top = stack_.back();
  if (stack_.size() < depth_) {
    apply_rules(top);
    depth_ = stack_.size();
  }
  if (!was_empty) return;
  // It would open and close here for ever.
  for (taken_ = 0; taken_ < top.rules->rules.size(); ++taken_) {
    wanted const& what = top.rules->rules[taken_];
    if (what.owner == closed && what.type == kind::opening) drop_empty();
  }
}

void line_parser::search_first_end(first_end& which) {
  which.is_found = false;
  which.outer_size = line_.units().size();
  which.outer_text = text_;
  which.is_found = find_first_end(which);
  if (!which.is_found) return;
  line_.cut(which.match.begin());
  text_ = ++texts_;
}

bool line_parser::find_first_end(first_end& which) {
  rule_set& set = rules_of(stack_[which.depth]);
  if (!set.first_end) return false;
  if (set.first_end_filter) {
    bool const found = find_where_filter_says(*set.first_end_filter, *set.first_end);
    if (found) which.match = match_;
    return found;
  }
  sought end{0, set.first_end->nfa, std::move(which.match)};
  if (end.nfa == nullptr && which.references < references_->size())
    end.nfa = (*references_)[which.references].get();
  bool const found = end.nfa && search(*set.first_end, end);
  which.match = std::move(end.match);
  return found;
}

bool line_parser::find_where_filter_says(rule_filter& filter, wanted& what) {
  std::u16string_view const units = line_.units();
  for (std::uint32_t at = position_; !is_stopped(); ++at) {
    at = static_cast<std::uint32_t>(filter.skip(units, at, units.size()));
    bool const splits_pair = at < units.size() && (units[at] & 0xfc00) == 0xdc00;
    if (!splits_pair && !filter.candidates(units, at).empty() && try_at(what, at)) return true;
    if (at >= units.size()) break;
  }
  return false;
}

// Closes the innermost region whose end was found, when all before that is done; false if none was.
bool line_parser::take_first_end() {
  auto const found = std::find_if(first_ends_.rbegin(), first_ends_.rend(),
                                  [](first_end const& end) { return end.is_found; });
  if (found == first_ends_.rend()) return false;
  first_ends_.erase(found.base(), first_ends_.end());
  first_end& taken = first_ends_.back();
  match_ = std::move(taken.match);
  while (stack_.size() > taken.depth + 1) stack_.pop_back();
  references_->resize(std::min(references_->size(), taken.references));
  rule const& owner = *stack_.back().owner;
  store_path(stack_.back().path, owner.end_captures,
             static_cast<unsigned>(owner.patterns.size() + owner.begin_captures.size()));
  close_region();
  return true;
}

void line_parser::take_opening() {
  wanted& what = stack_.back().rules->rules[taken_];
  rule const& owner = *what.owner;
  bool const opens = owner.end.is_set();
  if (opens && match_.empty() && opened_here(owner, match_.begin())) return drop_empty();
  if (opens && stack_.size() >= max_regions) {
    what.named->tell_too_deep();
    return drop_taken();
  }
  path_tree::id path = stack_.back().path;
  for (unsigned const step : what.steps) path = child(path, step);
  store_path(path, owner.begin_captures, static_cast<unsigned>(owner.patterns.size()));
  position_ = match_.end();
  if (opens) {
    std::size_t const references = references_->size();
    if (owner.has_back_references) references_->push_back(expanded_end(owner));
    if (owner.has_content_name()) tokens_.set(position_, content_path(owner, path));
    if (what.opened == nullptr) what.opened = &rule_sets_.of(owner, *what.base);
    stack_.push_back({what.base, path, &owner, what.opened, {}, {}, match_.begin()});
    if (owner.apply_end_pattern_first) {
      first_ends_.push_back({stack_.size() - 1, references});
      search_first_end(first_ends_.back());
    }
    apply_rules(stack_.back());
    return;
  }
  tokens_.set(position_, plain_path());
  if (match_.empty()) drop_empty();
}

nfa_wrapper line_parser::expanded_end(rule const& owner) {
  std::u16string source =
      expand_back_references(unicode::to_utf16(owner.end.source()), line_.units(), match_);
  if (auto const known = expanded_.find(source); known != expanded_.end()) return known->second;
  if (expanded_.size() >= max_expanded) expanded_.clear();
  std::string reason;
  nfa_wrapper made(source, reason);
  if (made.get() == nullptr) owner.end.tell_invalid(unicode::to_utf8(source), reason);
  return expanded_.emplace(std::move(source), std::move(made)).first->second;
}

bool line_parser::opened_here(rule const& owner, std::uint32_t position) const {
  for (auto node = stack_.rbegin(); node != stack_.rend() && node->opened_at == position; ++node)
    if (node->owner == &owner) return true;
  return false;
}

// Groups nest or stand apart, in the order of their numbers. What a group has outside of the match,
// which it may in a look-around, belongs to other rules.
void line_parser::store_path(path_tree::id path, std::vector<capture> const& captures,
                             unsigned base_index) {
  tokens_.set(match_.begin(), path);
  if (captures.empty()) return;
  struct waiting {
    std::uint32_t end;
    path_tree::id path;
  };
  std::vector<waiting> pending;
  path_tree::id current = path;
  auto const close_until = [&](std::uint32_t column) {
    for (; !pending.empty() && pending.back().end <= column; pending.pop_back()) {
      current = pending.back().path;
      tokens_.set(pending.back().end, current);
    }
  };
  for (std::size_t i = 0; i < captures.size(); ++i) {
    if (!match_.is_set(captures[i].group)) continue;
    auto const range = match_.groups[static_cast<std::size_t>(captures[i].group)];
    std::uint32_t const begin =
        std::max<std::uint32_t>(static_cast<std::uint32_t>(range.begin), match_.begin());
    std::uint32_t const end =
        std::min<std::uint32_t>(static_cast<std::uint32_t>(range.end), match_.end());
    if (begin > end) continue;
    close_until(begin);
    pending.push_back({end, current});
    current = child(current, base_index + static_cast<unsigned>(i));
    tokens_.set(begin, current);
  }
  close_until(~0u);
}

}  // namespace grammar
