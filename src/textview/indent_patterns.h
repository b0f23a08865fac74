#pragma once

#include "plist/value.h"
#include "regex/oniguruma.h"
#include "text/storage.h"

#include <array>
#include <optional>
#include <string>

/// The pattern that stands in the settings under a key; nothing, with a word on standard error, for
/// a bad one.
std::optional<oniguruma::ptrn_t> pattern_of_setting(std::string const& source, char const* key);

/// What a language says about the indentation of its lines, in patterns that are tested against
/// whole lines, without their ends. A bad pattern, and any in a very long line, matches nothing.
class indent_patterns {
 public:
  enum type : unsigned { unindented = 1, increase = 2, decrease = 4, next_line = 8 };
  /// The settings in which they stand, in the order of `type`.
  static constexpr std::array<char const*, 4> keys = {
      "unIndentedLinePattern", "increaseIndentPattern", "decreaseIndentPattern",
      "indentNextLinePattern"};

  indent_patterns() = default;
  explicit indent_patterns(plist::value const& settings);
  /// Whether the constructor would give the same for these settings.
  bool are_of(plist::value const& settings) const;

  /// Whether the language says where lines are indented more or less.
  bool know_indentation() const { return patterns_[1] || patterns_[2]; }
  bool matches(type which, text::unit_view line) const;
  /// The bits of `type`; `unindented` stands alone.
  unsigned typeForLine(text::unit_view line) const;
  /// The columns by which line `number` should be indented, if this were its content.
  std::size_t indentForContentAtLine(text::unit_view content, std::size_t number,
                                     text::storage const& text, std::size_t tab_size) const;

 private:
  std::array<std::string, 4> sources_;
  std::array<std::optional<oniguruma::ptrn_t>, 4> patterns_;
};
