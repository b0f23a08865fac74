#include "projects/BriskStringRanker.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/decomposition.h"
#include "platform/unicode.h"

namespace {

using view = std::u16string_view;

bool is_subsequence(view letters, view text) {
  for (char16_t const letter : letters) {
    std::size_t const at = text.find(letter);
    if (at == text.npos) return false;
    text.remove_prefix(at + 1);
  }
  return true;
}

/// A bit for each letter; several share one, so a letter may be missing whose bit is set.
std::uint64_t letter_bits(view letters) {
  std::uint64_t bits = 0;
  for (char16_t const letter : letters) bits |= std::uint64_t{1} << (letter & 63);
  return bits;
}

/// The best way to spread the letters of an abbreviation over a text: each letter is taken either
/// at the next word that begins with it, or at its next place. Both ways continue from where they
/// are, so the answers are kept by place and letter; without that each letter would double the
/// work.
class letter_placement {
 public:
  /// `letters` is a subsequence of `text`.
  letter_placement(view text, view letters, double unit)
      : text_(text), letters_(letters), unit_(unit), known_(letters.size()) {
    // How far from the start the last place of the text is from which the letters from i on follow.
    latest_.resize(letters.size() + 1, text.size());
    for (std::size_t i = letters.size(); i-- > 0;)
      latest_[i] = latest_[i + 1] == 0 ? 0 : text.rfind(letters[i], latest_[i + 1] - 1);
  }

  double score() { return score_from(0, 0, unit_ * 0.5); }

  /// The places that give the score, one for each letter.
  std::vector<std::size_t> places() {
    std::vector<std::size_t> result;
    double boost = unit_ * 0.5;
    std::size_t from = 0;
    for (std::size_t i = 0; i < letters_.size(); ++i, boost *= 0.5) {
      auto const [word, plain] = ways(from, i, boost);
      std::size_t const at = plain > word ? text_.find(letters_[i], from) : word_start(from, i) + 1;
      result.push_back(at);
      from = at + 1;
    }
    return result;
  }

 private:
  struct answer {
    std::size_t from;
    double score;
  };
  struct scores {
    double word = -1, plain = 0;
  };

  /// Of the blank before the word.
  std::size_t word_start(std::size_t from, std::size_t i) const {
    char16_t const wanted[] = {u' ', letters_[i]};
    return text_.find(view(wanted, 2), from);
  }

  scores ways(std::size_t from, std::size_t i, double boost) {
    scores result;
    std::size_t const word = word_start(from, i);
    if (word != text_.npos && word + 1 <= latest_[i])
      result.word = boost + unit_ + score_from(word + 2, i + 1, boost * 0.5);
    result.plain = score_from(text_.find(letters_[i], from) + 1, i + 1, boost * 0.5);
    return result;
  }

  double score_from(std::size_t from, std::size_t i, double boost) {
    if (i == letters_.size()) return 0;
    for (answer const& found : known_[i])
      if (found.from == from) return found.score;
    auto const [word, plain] = ways(from, i, boost);
    double const score = std::max(word, plain);
    known_[i].push_back({from, score});
    return score;
  }

  view text_, letters_;
  double unit_;
  std::vector<std::size_t> latest_;
  std::vector<std::vector<answer>> known_;
};

/// A unit for each letter that follows the one before directly, those runs taken as they come.
double run_score(view text, view letters, double unit) {
  double score = 0;
  while (letters.size() >= 2) {
    std::size_t const at = text.find(letters[0]);
    if (at == text.npos) break;
    text.remove_prefix(at + 1);
    if (!is_subsequence(letters.substr(1), text)) break;
    if (text.empty() || text[0] != letters[1]) continue;
    double run = unit;
    letters.remove_prefix(1);
    while (!letters.empty() && !text.empty() && letters[0] == text[0]) {
      run += unit;
      letters.remove_prefix(1);
      text.remove_prefix(1);
    }
    score += run;
  }
  return score;
}

bool is_mark(view text, std::size_t at) {
  return unicode::is_combining(unicode::code_point_at(text, at));
}

}  // namespace

std::u16string BriskStringRanker::prepareFilterString(view typed) {
  std::u16string result;
  view const text = typed;
  auto const decomposed = unicode::decompose(text);
  for (std::size_t i = 0; i < decomposed.units.size(); ++i) {
    char16_t const unit = decomposed.units[i];
    if (unicode::is_alnum(unit) && !is_mark(decomposed.units, i)) result += unicode::to_lower(unit);
  }
  return result;
}

BriskStringRanker::BriskStringRanker(view name) {
  if (name.empty()) return;
  auto const [units, origins] = unicode::decompose(name);
  string_.reserve(units.size() + 8);
  originalIndex_.reserve(units.size() + 8);
  auto const add = [&](char16_t unit, std::uint32_t origin) {
    string_ += unit;
    originalIndex_.push_back(origin);
  };
  add(u' ', 0);
  bool at_word_start = true;
  for (std::size_t i = 0; i < units.size(); ++i) {
    char16_t const unit = units[i];
    if (is_mark(units, i)) continue;
    if (unicode::is_upper(unit)) {
      if (!at_word_start) add(u' ', origins[i]);
      add(unicode::to_lower(unit), origins[i]);
      at_word_start = false;
    } else if (unicode::is_alnum(unit)) {
      add(unit, origins[i]);
      at_word_start = false;
    } else if (unit != u'\'' && unit != u'.' && !at_word_start && i + 1 != units.size()) {
      add(u' ', origins[i]);
      at_word_start = true;
    }
  }
  letters_ = letter_bits(string_);
}

bool BriskStringRanker::holds(view abbreviation) const {
  return !abbreviation.empty() && (letter_bits(abbreviation) & ~letters_) == 0 &&
         is_subsequence(abbreviation, string_);
}

double BriskStringRanker::scoreForAbbreviation(view abbreviation) const {
  if (!holds(abbreviation)) return -1;
  auto const n = static_cast<int>(std::min<std::size_t>(abbreviation.size(), 1000));
  double const unit = 1.0 / (n + 1);
  double score = std::max(letter_placement(string_, abbreviation, unit).score(),
                          run_score(string_, abbreviation, unit));
  double const share = unit * std::ldexp(1.0, -(n + 1));
  if (string_.find(abbreviation) != string_.npos) score += share;
  if (string_.size() > 1 && string_[1] == abbreviation[0]) score += share / 2;
  auto const blanks = static_cast<double>(std::count(string_.begin(), string_.end(), u' '));
  return score + score / ((blanks + 1.0) * unit) * (share / 4);
}

std::vector<std::size_t> BriskStringRanker::maskForAbbreviation(view abbreviation) const {
  if (!holds(abbreviation)) return {};
  std::vector<std::size_t> mask;
  double const unit = 1.0 / (static_cast<double>(abbreviation.size()) + 1);
  for (std::size_t const place : letter_placement(string_, abbreviation, unit).places())
    mask.push_back(originalIndex_[place]);
  std::sort(mask.begin(), mask.end());
  mask.erase(std::unique(mask.begin(), mask.end()), mask.end());
  return mask;
}
