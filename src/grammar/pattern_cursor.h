#pragma once

#include <cstddef>
#include <string_view>

#include "grammar/symbol_set.h"

namespace grammar {

/// Groups and brackets may be nested so deep.
inline constexpr int max_pattern_depth = 100;

bool is_ascii_letter(char16_t c);
/// The class that `c` stands for after a backslash; false if it has none.
bool class_after_backslash(char16_t c, symbol_set& set);

/// A place in the source of a pattern, and the small things that are read there. What the syntax
/// doesn't allow makes `failed` true for good.
struct pattern_cursor {
  explicit pattern_cursor(std::u16string_view pattern) : source(pattern) {}

  bool at_end() const { return at >= source.size(); }
  /// The unit that take() would give; there must be one.
  char16_t next() const { return source[at]; }
  bool next_is(std::u16string_view text) const { return source.substr(at).starts_with(text); }
  bool take(std::u16string_view text);
  /// 0 at the end, which is a failure.
  char16_t take();
  void give_up();

  /// The unit for which `c`, after a backslash, and what follows it stand: by a letter, a number
  /// or itself. False for what stands for no unit, or may not.
  bool unit_after_backslash(char16_t c, char16_t& unit);
  /// Of a property, what stands after `\p`. False if nothing does.
  bool skip_property();

  std::u16string_view source;
  std::size_t at = 0;
  bool failed = false;

 private:
  bool hexadecimal(int most, char16_t& unit);
};

}  // namespace grammar
