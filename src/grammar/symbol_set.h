#pragma once

#include <cstdint>

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

}  // namespace grammar
