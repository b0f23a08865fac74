#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "grammar/pattern_tree.h"

namespace grammar {

/// Tells which of several patterns may match at a place of a line, so that only those have to be
/// tried there; mostly that is none, or the one that does match.
///
///     rule_filter filter({u"if|else", u"\\d+"});
///     while ((at = filter.skip(line, at, line.size())) < line.size())
///       for (auto number : filter.candidates(line, at++)) ...
///
/// The patterns are made into one automaton that is more generous than they are (see
/// `pattern_tree`) and whose deterministic states are made when they are first needed. It runs
/// from the place on until all is decided, 64 units at most. There is a limit to the states;
/// what isn't decided by then may match.
///
/// A line is text with at most one line feed, at its end. Offsets are code units. For one thread
/// at a time.
class rule_filter {
 public:
  /// The sources of patterns; they are identified by their index. One that isn't understood may
  /// match anywhere, and one that isn't there never does.
  explicit rule_filter(std::vector<std::optional<std::u16string_view>> const& patterns);

  /// Goes from `at` to the first place where one may match, but not beyond `limit`, which is at
  /// most the line's size.
  std::size_t skip(std::u16string_view line, std::size_t at, std::size_t limit);
  /// Those that may match at a place, which can be the line's end, in ascending order. Good until
  /// the next call.
  std::vector<std::uint16_t> const& candidates(std::u16string_view line, std::size_t at);
  /// Whether there may be a match anywhere in a line. Of `units`, its line feed is left out.
  bool may_match_in(std::u16string_view units);

 private:
  using type = pattern_tree::type;
  struct node {
    type kind;  ///< `units` continues at `out` after one; `alternatives` at both; the others test
    std::uint16_t rule;
    bool accepts = false;
    std::uint32_t out = 0, out2 = 0;
    symbol_set set = {};
  };
  struct state {
    std::uint8_t previous = symbol_set::other;  ///< a symbol like the one before
    std::vector<std::uint32_t> nodes;           ///< where it continues, sorted
    std::vector<std::uint16_t> decided;         ///< those that may match whatever follows
    std::vector<std::uint16_t> candidates;      ///< and those that `nodes` belong to
  };
  class builder;

  static bool holds(node const& test, unsigned previous, unsigned symbol);
  void make_classes();
  unsigned class_before(std::u16string_view line, std::size_t at) const;
  std::uint32_t add_state(state made);
  /// The state after `from` when `symbol` is next, or `undecided`.
  std::uint32_t next(std::uint32_t from, unsigned symbol);
  std::uint32_t make_next(std::uint32_t from, unsigned symbol);
  state const& run(std::u16string_view line, std::size_t at, bool is_line_feed_next);
  void find_lone_start();
  void follow(std::uint32_t entry, unsigned previous, unsigned symbol, state& made);

  static constexpr std::uint32_t undecided = ~0u, dead = 0;

  std::vector<node> nodes_;
  std::uint8_t
      classes_[symbol_set::count];  ///< symbols between which no pattern makes a difference
  unsigned class_count_ = 0;
  std::vector<state> states_;
  std::unordered_map<std::u16string, std::uint32_t> known_;
  std::vector<std::uint32_t> next_;  ///< by state and class
  /// What may stand before a place. Symbols that all patterns take alike there are one.
  struct beginning {
    std::uint32_t state = 0;
    std::array<std::uint8_t, symbol_set::count> skipped = {};  ///< nothing can match there
  };
  std::vector<beginning> beginnings_;
  std::uint8_t beginning_of_[symbol_set::count];  ///< by the symbol before; the end for none
  std::size_t pattern_count_ = 0;
  bool knows_lone_start_ = false;
  std::optional<char16_t> lone_start_;  ///< with which all matches begin
  bool matches_at_end_ = false;         ///< after a line feed
  std::vector<std::uint32_t> visited_, stack_;
  std::uint32_t visit_ = 0;
  std::vector<bool> is_decided_;
};

}  // namespace grammar
