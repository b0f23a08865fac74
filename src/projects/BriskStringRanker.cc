#include "projects/BriskStringRanker.h"

#include <algorithm>

#include "platform/decomposition.h"
#include "platform/unicode.h"

std::u16string BriskStringRanker::prepareFilterString(std::u16string_view typed) {
  std::u16string result;
  auto const decomposed = unicode::decompose(typed);
  for (std::size_t i = 0; i < decomposed.units.size(); ++i) {
    char16_t const unit = decomposed.units[i];
    if (unicode::is_alnum(unit) &&
        !unicode::is_combining(unicode::code_point_at(decomposed.units, i)))
      result += unicode::to_lower(unit);
  }
  return result;
}

BriskStringRanker::BriskStringRanker(std::u16string_view name) {
  projects::append_searched(name, string_, &originalIndex_);
  letters_ = projects::letter_bits(string_);
}

bool BriskStringRanker::may_hold(projects::abbreviation const& wanted) const {
  return (wanted.bits() & ~letters_) == 0;
}

double BriskStringRanker::scoreForAbbreviation(projects::abbreviation& wanted) const {
  if (!may_hold(wanted)) return -1;
  auto const blanks = std::count(string_.begin(), string_.end(), u' ');
  return wanted.score(string_, static_cast<std::size_t>(blanks));
}

double BriskStringRanker::scoreForAbbreviation(std::u16string_view letters) const {
  projects::abbreviation wanted{std::u16string(letters)};
  return scoreForAbbreviation(wanted);
}

std::vector<std::size_t> BriskStringRanker::maskForAbbreviation(std::u16string_view letters) const {
  projects::abbreviation wanted{std::u16string(letters)};
  if (!may_hold(wanted)) return {};
  std::vector<std::size_t> mask = wanted.places(string_);
  for (std::size_t& place : mask) place = originalIndex_[place];
  std::sort(mask.begin(), mask.end());
  mask.erase(std::unique(mask.begin(), mask.end()), mask.end());
  return mask;
}
