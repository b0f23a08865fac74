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

bool line_parser::search(std::uint32_t position, region& node, candidate wanted, unsigned order) {
  auto const result = wanted.nfa->search(line_, position, is_last_, wanted.match);
  if (result == pattern::result::gave_up) wanted.named->tell_given_up();
  if (result != pattern::result::found) return false;
  order_key const key{wanted.match.begin(), order};
  node.matches.insert_or_assign(key, std::move(wanted));
  return true;
}

void line_parser::apply_rules(std::uint32_t position, region& node) {
  expanding_.clear();
  apply_rules(position, node, {node.owner, node.base, node.path}, 0);
}

unsigned line_parser::apply_rules(std::uint32_t position, region& node, group const& of,
                                  unsigned order) {
  // A group that is being expanded, or was, adds nothing: what it has comes first already.
  for (group const& other : expanding_)
    if (other.owner == of.owner && other.base == of.base) return order;
  expanding_.push_back(of);
  rule const& owner = *of.owner;
  path_tree::id const path = owner.end.is_set() ? content_path(owner, of.path) : of.path;
  if (!owner.apply_end_pattern_last) order = apply_end(position, node, of, order);
  for (unsigned i = 0; i < owner.patterns.size() && order < max_candidates; ++i) {
    rule const* new_base = nullptr;
    rule const* const child = rule_at_index(owner, i, *all_rules_, root_, of.base, new_base);
    if (child == nullptr || child->disabled) continue;
    if (new_base) {
      order = apply_rules(position, node, {child, new_base, paths_->child(path, i)}, order);
      continue;
    }
    lazy_pattern const* const opening = child->opening();
    if (opening == nullptr) continue;
    candidate const wanted{kind::opening, child, 0, opening->get(), opening, {}};
    if (search(position, node, wanted, order)) {
      // The path is made when it is needed, as most rules match nothing.
      for (auto& [key, made] : node.matches)
        if (key.order == order) made.path = paths_->child(path, i);
      ++order;
    }
  }
  if (owner.apply_end_pattern_last) order = apply_end(position, node, of, order);
  if (pattern const* const swallow = owner.swallow.get())
    order += search(position, node, {kind::swallow, &owner, 0, swallow, &owner.swallow, {}}, order);
  return order;
}

unsigned line_parser::apply_end(std::uint32_t position, region& node, group const& of,
                                unsigned order) {
  rule const& owner = *of.owner;
  pattern const* nfa = nullptr;
  if (!owner.has_back_references) {
    nfa = owner.end.get();
  } else if (!references_->empty()) {
    nfa = references_->back().get();
  }
  if (nfa == nullptr) return order;
  return order + search(position, node, {kind::end, &owner, node.path, nfa, &owner.end, {}}, order);
}

bool line_parser::parse_line(std::u16string line, bool is_last, line_tokens& tokens,
                             reference_stack& references, std::atomic<bool> const& stop) {
  line_ = std::move(line);
  make_valid(line_);
  is_last_ = is_last;
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
    } else if (first->second.type == kind::opening) {
      take_opening(first);
    } else if (first->second.type == kind::end && stack_.size() > 1) {
      take_end(candidate(std::move(first->second)));
    } else {
      position_ = first->second.match.end();
      if (first->second.match.empty() || first->second.type == kind::end) {
        tell_zero_width(*first->second.owner);
        matches.erase(first);
      }
    }
  }
  return true;
}

void line_parser::take_end(candidate const& taken) {
  rule const& owner = *taken.owner;
  if (owner.has_back_references && !references_->empty()) references_->pop_back();
  store_path(taken, owner.end_captures,
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
    return match.second.owner == closed && match.second.type == kind::opening &&
           match.first.begin == position_;
  });
}

void line_parser::take_opening(std::map<order_key, candidate>::iterator taken) {
  candidate const& found = taken->second;
  rule const& owner = *found.owner;
  bool const opens = owner.end.is_set();
  if (opens && (stack_.size() >= max_regions ||
                (found.match.empty() && opened_here(owner, found.match.begin())))) {
    tell_zero_width(owner);
    stack_.back().matches.erase(taken);
    return;
  }
  store_path(found, owner.begin_captures, static_cast<unsigned>(owner.patterns.size()));
  position_ = found.match.end();
  if (opens) {
    if (owner.has_back_references)
      references_->push_back(nfa_wrapper(
          expand_back_references(unicode::to_utf16(owner.end.source()), line_, found.match)));
    path_tree::node const node = paths_->at(found.path);
    if (owner.has_content_name()) tokens_->set(position_, content_path(owner, found.path));
    stack_.push_back({node.base, found.path, &owner, {}, found.match.begin()});
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
void line_parser::store_path(candidate const& of, std::vector<capture> const& captures,
                             unsigned base_index) {
  tokens_->set(of.match.begin(), of.path);
  struct waiting {
    std::uint32_t end;
    path_tree::id path;
  };
  std::vector<waiting> pending;
  path_tree::id current = of.path;
  auto const close_until = [&](std::uint32_t column) {
    for (; !pending.empty() && pending.back().end <= column; pending.pop_back()) {
      current = pending.back().path;
      tokens_->set(pending.back().end, current);
    }
  };
  for (std::size_t i = 0; i < captures.size(); ++i) {
    if (!of.match.is_set(captures[i].group)) continue;
    auto const range = of.match.groups[static_cast<std::size_t>(captures[i].group)];
    std::uint32_t const begin =
        std::max<std::uint32_t>(static_cast<std::uint32_t>(range.begin), of.match.begin());
    std::uint32_t const end =
        std::min<std::uint32_t>(static_cast<std::uint32_t>(range.end), of.match.end());
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
