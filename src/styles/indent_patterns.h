#pragma once

#include "plist/value.h"
#include "regex/oniguruma.h"
#include "text/storage.h"

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace styles {

/// The pattern that stands in the settings under a key; nothing, with a word on standard error, for
/// a bad one.
std::optional<oniguruma::ptrn_t> pattern_of_setting(std::string const& source, char const* key);

/// What a language says about the indentation of its lines, in patterns that are tested against
/// whole lines, without their ends. A bad pattern, and any in a very long line, matches nothing.
class indent_patterns {
 public:
  enum type : unsigned {
    unindented = 1,
    increase = 2,
    decrease = 4,
    next_line = 8,
    continued = 16,
    complete = 32,
    flat_block = 64
  };
  /// The settings in which they stand, in the order of `type`. That of `continued` is tested
  /// against two lines with a line feed between them.
  static constexpr std::array<char const*, 7> keys = {
      "unIndentedLinePattern", "increaseIndentPattern", "decreaseIndentPattern",
      "indentNextLinePattern", "continuedLinePattern",  "completeLinePattern",
      "flatBlockPattern"};

  indent_patterns() = default;
  explicit indent_patterns(plist::value const& settings);
  /// Whether the constructor would give the same for these settings.
  bool are_of(plist::value const& settings) const;

  /// Whether the language says where lines are indented more or less.
  bool know_indentation() const { return patterns_[1] || patterns_[2]; }
  /// Whether there is a pattern of a type.
  bool know(type which) const;
  bool matches(type which, text::unit_view line) const;
  /// Whether a line of this type begins and ends a block, as a label does.
  static constexpr bool is_label(unsigned bits) { return bits & increase && bits & decrease; }
  /// The first four bits of `type`; `unindented` stands alone.
  unsigned typeForLine(text::unit_view line) const;
  /// The columns by which line `number` should be indented, if this were its content. What the
  /// lines above are may be told by the caller, who knows which of them are in another language or
  /// in none.
  using line_types = std::function<unsigned(std::size_t number)>;
  std::size_t indentForContentAtLine(text::unit_view content, std::size_t number,
                                     text::storage const& text, std::size_t tab_size,
                                     line_types const& types = {}) const;

  /// Pairs of patterns: a line that matches the first is indented like the nearest one above that
  /// matches the second, such as one label like the label before. The first pair is of lines that
  /// end and begin what the others are in.
  static constexpr char const* aligned_key = "alignedLinePatterns";

 private:
  using line_pair = std::pair<oniguruma::ptrn_t, oniguruma::ptrn_t>;
  line_pair const* aligned_pair(text::unit_view line) const;
  std::optional<std::size_t> aligned_line(line_pair const& pair, std::size_t number,
                                          text::storage const& text, line_types const& types) const;

  plist::value aligned_source_;
  std::vector<line_pair> aligned_;
  std::array<std::string, keys.size()> sources_;
  std::array<std::optional<oniguruma::ptrn_t>, keys.size()> patterns_;
};

}  // namespace styles
