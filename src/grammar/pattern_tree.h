#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace grammar {

/// What a pattern can see at a place: an ASCII unit, some other unit, or the text's end.
struct symbol_set {
  static constexpr unsigned other = 128, end = 129, count = 130;

  std::uint64_t ascii[2] = {0, 0};
  bool has_other = false, has_end = false;

  static unsigned symbol(char16_t unit) { return unit < 128 ? unit : other; }
  bool has(unsigned symbol) const {
    if (symbol < 128) return (ascii[symbol >> 6] >> (symbol & 63) & 1) != 0;
    return symbol == other ? has_other : has_end;
  }
  void add(unsigned unit) { ascii[unit >> 6] |= std::uint64_t{1} << (unit & 63); }
  void add(unsigned first, unsigned last) {
    while (first <= last && first < 128) add(first++);
  }
  void add(symbol_set const& more);
  void remove(symbol_set const& less);
  bool is_within(symbol_set const& whole) const;
  symbol_set complement() const;
  friend bool operator==(symbol_set const&, symbol_set const&) = default;

  static symbol_set of(char const* units);
  static symbol_set everything();  ///< but the end
  static symbol_set words();       ///< ASCII only
};

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
    line_begin,
    word_boundary,
    not_word_boundary,
    after_word,      ///< an ASCII word unit comes before
    not_after_word,  ///< none does
    before           ///< a symbol of `set` must follow, perhaps the end
  };
  static constexpr unsigned unlimited = ~0u;

  type kind = type::sequence;
  symbol_set set;
  bool exact = false;  ///< `set` has no ASCII unit that the pattern doesn't take
  unsigned least = 0, most = 0;
  std::vector<pattern_tree> parts;

  /// Reads a pattern in the syntax of Oniguruma for Ruby. Nothing for what it doesn't know.
  static std::optional<pattern_tree> parse(std::u16string_view pattern);

  /// What can stand at a place where it matches; `complete` unless it may match nothing.
  symbol_set first(bool& complete) const;
};

}  // namespace grammar
