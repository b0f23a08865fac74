#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "regex/onig_replace.h"

namespace regex {

/// What bundles say about turning a piece of text into the name of a symbol: substitutions, one
/// after the other, in a text such as
///
///     s/\s*\{.*//;       # neither the body
///     s/\s+/ /g;         # nor the line breaks
///
/// After an "s" comes the delimiter. A backslash protects the unit after it. Main thread only.
class transformation_program {
 public:
  struct substitution {
    std::string pattern, format, options;
    std::shared_ptr<onig::ptrn_t const> compiled;
  };

  /// What is no substitution, or one whose pattern is none, is skipped; one that isn't complete
  /// ends the program.
  explicit transformation_program(std::string_view text);

  std::vector<substitution> const& substitutions() const { return substitutions_; }
  /// The first thing in the text that does nothing, in words; "" when all of it is in order.
  std::string const& fault() const { return fault_; }
  std::string apply(std::string text) const;

 private:
  std::vector<substitution> substitutions_;
  std::string fault_;
};

}  // namespace regex
