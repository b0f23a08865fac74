#include "grammar/rule_filter.h"

#include <algorithm>
#include <array>
#include <map>

#include "text/unit_search.h"

namespace grammar {
namespace {

constexpr std::size_t max_states = 2000;
constexpr std::size_t max_nodes = 200'000;
constexpr std::size_t max_run = 64;
// More repetitions than these are taken for any number.
constexpr unsigned max_repeat = 4;
// Of more patterns it isn't asked whether all begin alike.
constexpr std::size_t max_alike = 4;
constexpr std::uint32_t unknown = ~0u - 1;

template <class T, class F>
std::array<T, symbol_set::count> table_of(F of) {
  std::array<T, symbol_set::count> made;
  for (unsigned symbol = 0; symbol < made.size(); ++symbol) made[symbol] = of(symbol);
  return made;
}

auto const is_word = table_of<bool>([](unsigned symbol) {
  static symbol_set const set = symbol_set::words();
  return set.has(symbol);
});

/// Tells symbols apart: after each `split` those that differ have different numbers.
class partition {
 public:
  void split(symbol_set const& set) {
    if (count_ == symbol_set::count || std::find(seen_.begin(), seen_.end(), set) != seen_.end())
      return;
    seen_.push_back(set);
    std::map<std::pair<unsigned, bool>, unsigned> made;
    for (unsigned symbol = 0; symbol < symbol_set::count; ++symbol) {
      auto const key = std::pair(number_[symbol], set.has(symbol));
      number_[symbol] = made.emplace(key, static_cast<unsigned>(made.size())).first->second;
    }
    count_ = static_cast<unsigned>(made.size());
  }
  void split_basically() {
    symbol_set beyond;
    beyond.has_other = true;
    split(beyond);
    beyond.has_end = true;
    split(beyond);
    split(symbol_set::words());
    split(symbol_set::of("\n"));
  }
  unsigned count() const { return count_; }
  unsigned operator[](unsigned symbol) const { return number_[symbol]; }

 private:
  std::array<unsigned, symbol_set::count> number_{};
  unsigned count_ = 1;
  std::vector<symbol_set> seen_;
};

}  // namespace

/// Makes a pattern's nodes, from its end to its beginning.
class rule_filter::builder {
 public:
  builder(std::vector<node>& nodes, std::uint16_t rule) : nodes_(nodes), rule_(rule) {
    accept_ = add(type::sequence, 0);
    nodes_[accept_].accepts = true;
  }

  /// The node at which the pattern begins.
  std::uint32_t build(std::u16string_view pattern) {
    auto const tree = pattern_tree::parse(pattern);
    if (!tree) return accept_;
    std::uint32_t const entry = build(*tree, accept_);
    return nodes_.size() < max_nodes ? entry : accept_;
  }

 private:
  std::uint32_t add(type kind, std::uint32_t out, std::uint32_t out2 = 0) {
    nodes_.push_back({kind, rule_, false, out, out2});
    return static_cast<std::uint32_t>(nodes_.size() - 1);
  }
  std::uint32_t add(type kind, symbol_set const& set, std::uint32_t out) {
    std::uint32_t const made = add(kind, out);
    nodes_[made].set = set;
    return made;
  }

  std::uint32_t build(pattern_tree const& tree, std::uint32_t out) {
    if (nodes_.size() >= max_nodes) return out;
    switch (tree.kind) {
      case type::units:
      case type::after:
      case type::before:
        return add(tree.kind, tree.set, out);
      case type::any_text: {
        std::uint32_t const loop = add(type::alternatives, 0, out);
        nodes_[loop].out = add(type::units, symbol_set::everything(), loop);
        return loop;
      }
      case type::sequence:
        for (auto part = tree.parts.rbegin(); part != tree.parts.rend(); ++part)
          out = build(*part, out);
        return out;
      case type::alternatives: {
        std::uint32_t made = build(tree.parts.back(), out);
        for (std::size_t i = tree.parts.size() - 1; i-- > 0;) {
          std::uint32_t const part = build(tree.parts[i], out);
          made = add(type::alternatives, part, made);
        }
        return made;
      }
      case type::repeat:
        return build_repeat(tree, out);
      case type::look_ahead: {
        // At the end of the pattern, what follows might as well belong to it.
        if (out == accept_) return build(tree.parts[0], out);
        bool is_complete;
        symbol_set const set = tree.parts[0].first(is_complete);
        return is_complete ? add(type::before, set, out) : out;
      }
      default:
        return add(tree.kind, out);
    }
  }

  std::uint32_t build_repeat(pattern_tree const& tree, std::uint32_t out) {
    unsigned const least = std::min(tree.least, max_repeat);
    std::uint32_t made = out;
    if (tree.least > max_repeat || tree.most - tree.least > max_repeat) {
      made = add(type::alternatives, 0, out);
      std::uint32_t const body = build(tree.parts[0], made);
      nodes_[made].out = body;
    } else {
      for (unsigned i = tree.least; i < tree.most; ++i) {
        std::uint32_t const body = build(tree.parts[0], made);
        made = add(type::alternatives, body, out);
      }
    }
    for (unsigned i = 0; i < least; ++i) made = build(tree.parts[0], made);
    return made;
  }

  std::vector<node>& nodes_;
  std::uint16_t rule_;
  std::uint32_t accept_;
};

rule_filter::rule_filter(std::vector<std::optional<std::u16string_view>> const& patterns)
    : is_decided_(patterns.size()) {
  state start;
  for (std::size_t i = 0; i < patterns.size(); ++i)
    if (patterns[i])
      start.nodes.push_back(builder(nodes_, static_cast<std::uint16_t>(i)).build(*patterns[i]));
  pattern_count_ = start.nodes.size();
  std::sort(start.nodes.begin(), start.nodes.end());
  visited_.resize(nodes_.size());
  make_classes();
  add_state({});  // dead
  for (unsigned symbol = 0; symbol < symbol_set::count; ++symbol) {
    beginning& made = beginnings_[beginning_of_[symbol]];
    if (made.state != dead) continue;
    start.previous = static_cast<std::uint8_t>(symbol);
    made.state = add_state(start);
  }
}

void rule_filter::make_classes() {
  partition symbols, previous;
  symbols.split_basically();
  previous.split_basically();
  for (node const& n : nodes_) {
    if (n.kind == type::units || n.kind == type::before) symbols.split(n.set);
    if (n.kind == type::after) previous.split(n.set);
  }
  // A class says what the previous symbol of the next place is, as far as it matters.
  for (unsigned i = 0; i < previous.count(); ++i) {
    symbol_set set;
    for (unsigned symbol = 0; symbol < 128; ++symbol)
      if (previous[symbol] == i) set.add(symbol);
    symbols.split(set);
  }
  for (unsigned symbol = 0; symbol < symbol_set::count; ++symbol) {
    classes_[symbol] = static_cast<std::uint8_t>(symbols[symbol]);
    beginning_of_[symbol] = static_cast<std::uint8_t>(previous[symbol]);
  }
  class_count_ = symbols.count();
  beginnings_.resize(previous.count());
}

std::uint32_t rule_filter::add_state(state made) {
  std::u16string key;
  if (!made.nodes.empty()) key += static_cast<char16_t>(beginning_of_[made.previous]);
  for (std::uint32_t const node : made.nodes) {
    key += static_cast<char16_t>(node);
    key += static_cast<char16_t>(node >> 16);
  }
  key += u'|';
  for (std::uint16_t const rule : made.decided) key += static_cast<char16_t>(rule);
  auto const [it, added] = known_.try_emplace(key, static_cast<std::uint32_t>(states_.size()));
  if (!added) return it->second;
  made.candidates = made.decided;
  for (std::uint32_t const node : made.nodes) made.candidates.push_back(nodes_[node].rule);
  std::sort(made.candidates.begin(), made.candidates.end());
  made.candidates.erase(std::unique(made.candidates.begin(), made.candidates.end()),
                        made.candidates.end());
  states_.push_back(std::move(made));
  next_.resize(states_.size() * class_count_, unknown);
  return it->second;
}

// The class of the symbol before a place.
unsigned rule_filter::class_before(std::u16string_view line, std::size_t at) const {
  return beginning_of_[at == 0 ? symbol_set::end : symbol_set::symbol(line[at - 1])];
}

bool rule_filter::holds(node const& test, unsigned previous, unsigned symbol) {
  bool const unclear = previous == symbol_set::other || symbol == symbol_set::other;
  switch (test.kind) {
    case type::line_begin:
      return previous == symbol_set::end || previous == '\n';
    case type::word_boundary:
      return unclear || is_word[previous] != is_word[symbol];
    case type::not_word_boundary:
      return unclear || is_word[previous] == is_word[symbol];
    case type::after:
      return previous == symbol_set::other || test.set.has(previous);
    case type::before:
      return test.set.has(symbol);
    default:
      return true;
  }
}

void rule_filter::follow(std::uint32_t entry, unsigned previous, unsigned symbol, state& made) {
  stack_.assign(1, entry);
  while (!stack_.empty()) {
    std::uint32_t const at = stack_.back();
    stack_.pop_back();
    if (visited_[at] == visit_) continue;
    visited_[at] = visit_;
    node const& n = nodes_[at];
    if (is_decided_[n.rule]) continue;
    if (n.accepts) {
      is_decided_[n.rule] = true;
    } else if (n.kind == type::units) {
      if (!n.set.has(symbol)) continue;
      // A character beyond ASCII may have one unit or two.
      if (symbol == symbol_set::other)
        is_decided_[n.rule] = true;
      else
        made.nodes.push_back(n.out);
    } else if (holds(n, previous, symbol)) {
      stack_.push_back(n.out);
      if (n.kind == type::alternatives) stack_.push_back(n.out2);
    }
  }
}

std::uint32_t rule_filter::make_next(std::uint32_t from, unsigned symbol) {
  if (states_.size() >= max_states) return undecided;
  state made;
  made.previous = static_cast<std::uint8_t>(symbol);
  std::fill(is_decided_.begin(), is_decided_.end(), false);
  for (std::uint16_t const rule : states_[from].decided) is_decided_[rule] = true;
  ++visit_;
  for (std::uint32_t const entry : states_[from].nodes)
    follow(entry, states_[from].previous, symbol, made);
  std::erase_if(made.nodes, [&](std::uint32_t n) { return is_decided_[nodes_[n].rule]; });
  std::sort(made.nodes.begin(), made.nodes.end());
  made.nodes.erase(std::unique(made.nodes.begin(), made.nodes.end()), made.nodes.end());
  for (std::size_t i = 0; i < is_decided_.size(); ++i)
    if (is_decided_[i]) made.decided.push_back(static_cast<std::uint16_t>(i));
  return next_[from * class_count_ + classes_[symbol]] = add_state(std::move(made));
}

std::uint32_t rule_filter::next(std::uint32_t from, unsigned symbol) {
  std::uint32_t const to = next_[from * class_count_ + classes_[symbol]];
  return to == unknown ? make_next(from, symbol) : to;
}

std::size_t rule_filter::skip(std::u16string_view line, std::size_t at, std::size_t limit) {
  unsigned previous = class_before(line, at);
  for (; at < limit; ++at) {
    unsigned const symbol = symbol_set::symbol(line[at]);
    beginning& from = beginnings_[previous];
    if (!from.skipped[symbol]) {
      if (next(from.state, symbol) != dead) return at;
      from.skipped[symbol] = 1;
    }
    previous = beginning_of_[symbol];
  }
  return at;
}

rule_filter::state const& rule_filter::run(std::u16string_view line, std::size_t at,
                                           bool is_line_feed_next) {
  std::uint32_t current = beginnings_[class_before(line, at)].state;
  for (std::size_t const stop = at + max_run; at < stop; ++at) {
    unsigned const symbol = at < line.size()                         ? symbol_set::symbol(line[at])
                            : is_line_feed_next && at == line.size() ? '\n'
                                                                     : symbol_set::end;
    std::uint32_t const to = next(current, symbol);
    if (to == undecided) break;
    current = to;
    if (symbol == symbol_set::end || states_[current].nodes.empty()) break;
  }
  return states_[current];
}

std::vector<std::uint16_t> const& rule_filter::candidates(std::u16string_view line,
                                                          std::size_t at) {
  return run(line, at, false).candidates;
}

void rule_filter::find_lone_start() {
  knows_lone_start_ = true;
  matches_at_end_ = !run(u"\n", 1, false).candidates.empty();
  if (pattern_count_ > max_alike) return;
  symbol_set starts;
  for (beginning const& from : beginnings_) {
    for (unsigned symbol = 0; symbol < symbol_set::end; ++symbol) {
      if (next(from.state, symbol) == dead) continue;
      if (symbol == symbol_set::other || symbol == '\n') return;
      starts.add(symbol);
    }
  }
  for (unsigned symbol = 0; symbol < symbol_set::other; ++symbol) {
    if (!starts.has(symbol)) continue;
    if (lone_start_) {
      lone_start_.reset();
      return;
    }
    lone_start_ = static_cast<char16_t>(symbol);
  }
}

bool rule_filter::may_match_in(std::u16string_view units) {
  if (!knows_lone_start_) find_lone_start();
  if (matches_at_end_) return true;
  char16_t const *const begin = units.data(), *const end = begin + units.size();
  for (std::size_t at = 0;; ++at) {
    at = lone_start_
             ? static_cast<std::size_t>(text::find_unit(begin + at, end, *lone_start_) - begin)
             : skip(units, at, units.size());
    if (at >= units.size()) break;
    if (!run(units, at, true).candidates.empty()) return true;
  }
  return !lone_start_ && !run(units, units.size(), true).candidates.empty();
}

}  // namespace grammar
