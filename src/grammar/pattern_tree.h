#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "grammar/symbol_set.h"

namespace grammar {

/// The structure of a pattern, as far as it takes to tell where it cannot match. It describes at
/// least all the texts that the pattern matches; what it can't express is left out on the side of
/// matching more.
struct pattern_tree {
  enum class type {
    units,         ///< one unit of `set`
    any_text,      ///< any number of any units
    sequence,      ///< `parts`, one after the other
    alternatives,  ///< one of `parts`
    repeat,        ///< the one part, `least` times to `most`
    look_ahead,    ///< the one part must follow
    assertion,     ///< of any other kind
    line_begin,
    word_boundary,
    not_word_boundary,
    after,  ///< a symbol of `set` must come before; the end stands for the line's begin
    before  ///< a symbol of `set` must follow, perhaps the end
  };
  static constexpr unsigned unlimited = ~0u;

  type kind = type::sequence;
  symbol_set set;
  bool exact = false;  ///< `set` has no ASCII unit that the pattern doesn't take
  unsigned least = 0, most = 0;
  bool greedy = false;  ///< a `repeat` that takes as often as it can, and gives back
  std::vector<pattern_tree> parts;

  /// Reads a pattern in the syntax of Oniguruma for Ruby. Nothing for what it doesn't know.
  static std::optional<pattern_tree> parse(std::u16string_view pattern);

  /// What can stand at a place where it matches; `complete` unless it may match nothing.
  symbol_set first(bool& complete) const;
};

}  // namespace grammar
