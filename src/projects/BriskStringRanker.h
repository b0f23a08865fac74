#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "projects/abbreviation.h"

/// Scores how well an abbreviation fits a name, as every list does in which the user picks one of
/// many names by a few letters: word starts count most, above all those of the first letters, then
/// letters that stand together.
///
///     auto const typed = BriskStringRanker::prepareFilterString(u"fb");
///     double score = BriskStringRanker(u"fooBar").scoreForAbbreviation(typed);  // -1: no match
///
/// Made once for each name and kept while letters are typed. Any thread, one at a time.
class BriskStringRanker {
 public:
  /// What is typed in the form that abbreviations have: lower case, no accents, letters and digits
  /// alone. Nothing is left of text without any; lists show all names then.
  static std::u16string prepareFilterString(std::u16string_view typed);

  explicit BriskStringRanker(std::u16string_view name);

  /// From 0 up to about 1.5, or -1 when the letters don't stand in the name in this order, and for
  /// an empty abbreviation. Takes time in proportion to the name and the abbreviation.
  double scoreForAbbreviation(std::u16string_view abbreviation) const;
  /// The same for letters that are looked for in many names.
  double scoreForAbbreviation(projects::abbreviation& wanted) const;
  /// The units of the name that the letters of an abbreviation match, in their order; none without
  /// a match.
  std::vector<std::size_t> maskForAbbreviation(std::u16string_view abbreviation) const;

 private:
  bool may_hold(projects::abbreviation const& wanted) const;

  /// The name in lower case, a blank before each word and nothing else but letters and digits.
  std::u16string string_;
  std::vector<std::uint32_t> originalIndex_;  ///< for each of these units, that of the name
  std::uint64_t letters_ = 0;                 ///< which there are, as a quick test
};
