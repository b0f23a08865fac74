#include "projects/abbreviation.h"

#include <algorithm>
#include <cmath>

#include "platform/decomposition.h"
#include "platform/unicode.h"
#include "platform/utf.h"

namespace projects {
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

enum class letter_kind { upper, other, none };

letter_kind kind_of(char16_t unit) {
  if (unicode::is_upper(unit)) return letter_kind::upper;
  return unicode::is_alnum(unit) ? letter_kind::other : letter_kind::none;
}

letter_kind kind_of(char unit) {
  if ('A' <= unit && unit <= 'Z') return letter_kind::upper;
  return ('a' <= unit && unit <= 'z') || ('0' <= unit && unit <= '9') ? letter_kind::other
                                                                      : letter_kind::none;
}

char16_t lower(char16_t unit) {
  return unicode::to_lower(unit);
}

char16_t lower(char unit) {
  return static_cast<char16_t>(unit | 0x20);
}

/// Makes words of units without marks; `add` gets each unit of the result, and the index of the one
/// it came from.
template <class Unit, class Skipped, class Add>
void make_words(std::basic_string_view<Unit> units, Skipped const& is_skipped, Add const& add) {
  add(u' ', 0);
  bool at_word_start = true;
  for (std::size_t i = 0; i < units.size(); ++i) {
    Unit const unit = units[i];
    if (is_skipped(i)) continue;
    switch (kind_of(unit)) {
      case letter_kind::upper:
        if (!at_word_start) add(u' ', i);
        add(lower(unit), i);
        at_word_start = false;
        break;
      case letter_kind::other:
        add(static_cast<char16_t>(unit), i);
        at_word_start = false;
        break;
      case letter_kind::none:
        if (unit == Unit('\'') || unit == Unit('.') || at_word_start || i + 1 == units.size())
          break;
        add(u' ', i);
        at_word_start = true;
    }
  }
}

}  // namespace

void append_searched(view name, std::u16string& text, std::vector<std::uint32_t>* origins) {
  if (name.empty()) return;
  auto const decomposed = unicode::decompose(name);
  view const units = decomposed.units;
  make_words(
      units, [&](std::size_t i) { return is_mark(units, i); },
      [&](char16_t unit, std::size_t i) {
        text += unit;
        if (origins != nullptr) origins->push_back(i == 0 ? 0 : decomposed.origins[i]);
      });
}

void append_searched(std::string_view name, std::u16string& text) {
  if (name.empty()) return;
  if (std::any_of(name.begin(), name.end(), [](char c) { return (c & 0x80) != 0; }))
    return append_searched(unicode::to_utf16(name), text);
  make_words(
      name, [](std::size_t) { return false; }, [&](char16_t unit, std::size_t) { text += unit; });
}

std::uint64_t letter_bits(view letters) {
  std::uint64_t bits = 0;
  for (char16_t const letter : letters) bits |= std::uint64_t{1} << (letter & 63);
  return bits;
}

abbreviation::abbreviation(std::u16string letters)
    : letters_(std::move(letters)),
      bits_(letter_bits(letters_)),
      unit_(1.0 / (static_cast<double>(std::min<std::size_t>(letters_.size(), 1000)) + 1)),
      share_(
          unit_ *
          std::ldexp(1.0, -(static_cast<int>(std::min<std::size_t>(letters_.size(), 1000)) + 1))),
      latest_(letters_.size() + 1),
      known_(letters_.size()) {}

/// Finds how far from the start the last place of the text is from which the letters from i on
/// follow. False if all of them follow from nowhere.
bool abbreviation::prepare(view text) {
  text_ = text;
  latest_.back() = text.size();
  for (std::size_t i = letters_.size(); i-- > 0;) {
    if (latest_[i + 1] == 0) return false;
    latest_[i] = text.rfind(letters_[i], latest_[i + 1] - 1);
    if (latest_[i] == text.npos) return false;
  }
  return !letters_.empty();
}

/// Of the blank before the word.
std::size_t abbreviation::word_start(std::size_t from, std::size_t i) const {
  for (std::size_t at = from; (at = text_.find(letters_[i], at)) != text_.npos; ++at)
    if (at > from && text_[at - 1] == u' ') return at - 1;
  return text_.npos;
}

/// Each letter is taken either at the next word that begins with it, or at its next place.
abbreviation::scores abbreviation::ways(std::size_t from, std::size_t i, double boost) {
  scores result;
  std::size_t const word = word_start(from, i);
  if (word != text_.npos && word + 1 <= latest_[i])
    result.word = boost + unit_ + score_from(word + 2, i + 1, boost * 0.5);
  result.plain = score_from(text_.find(letters_[i], from) + 1, i + 1, boost * 0.5);
  return result;
}

/// Both ways continue from where they are, so the answers are kept by place and letter; without
/// that each letter would double the work.
double abbreviation::score_from(std::size_t from, std::size_t i, double boost) {
  if (i == letters_.size()) return 0;
  for (answer const& found : known_[i])
    if (found.from == from) return found.score;
  auto const [word, plain] = ways(from, i, boost);
  double const score = std::max(word, plain);
  known_[i].push_back({from, score});
  return score;
}

double abbreviation::score(view text, std::size_t blanks) {
  if (!prepare(text)) return -1;
  for (auto& answers : known_) answers.clear();
  double score = std::max(score_from(0, 0, unit_ * 0.5), run_score(text, letters_, unit_));
  if (letters_.size() == 1 || text.find(letters_) != text.npos) score += share_;
  if (text.size() > 1 && text[1] == letters_[0]) score += share_ / 2;
  return score + score / ((static_cast<double>(blanks) + 1.0) * unit_) * (share_ / 4);
}

std::vector<std::size_t> abbreviation::places(view text) {
  if (!prepare(text)) return {};
  for (auto& answers : known_) answers.clear();
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

}  // namespace projects
