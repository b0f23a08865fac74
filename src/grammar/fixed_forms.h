#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "grammar/pattern_tree.h"

namespace grammar {

/// The forms in which a simple pattern such as "->|<<=?" or "\\b(?:do|if)\\b" can match: sequences
/// of units, with word boundaries. Comparing with them takes a few nanoseconds where a call of the
/// library takes 150. Unchanging; any thread.
class fixed_forms {
 public:
  enum class result { no, yes, unknown };

  /// No forms if the pattern is not so simple, or has many.
  static fixed_forms of(std::u16string_view pattern);
  bool empty() const { return forms_.empty(); }
  /// Whether the pattern matches at a place, and how many units. Unknown beside other text than
  /// ASCII.
  result match(std::u16string_view line, std::size_t at, std::size_t& size) const;

 private:
  struct element {
    pattern_tree::type kind;
    symbol_set set;
  };
  using form = std::vector<element>;

  static bool expand(pattern_tree const& tree, std::vector<form>& forms);
  static result match(form const& form, std::u16string_view line, std::size_t at,
                      std::size_t& size);

  std::vector<form> forms_;  ///< the first one that matches counts
};

}  // namespace grammar
