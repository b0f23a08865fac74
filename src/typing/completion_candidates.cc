#include "typing/completion_candidates.h"

#include "platform/unicode.h"
#include "text/cluster.h"
#include "text/storage.h"

#include <algorithm>
#include <numeric>

namespace typing {
namespace {

// The first letter, as it is and in the other case.
std::vector<std::u16string> beginnings_of(std::u16string_view typed) {
  std::u16string const first(typed.substr(0, text::next_cluster(typed, 0)));
  std::vector<std::u16string> result{first};
  for (char16_t const unit : {unicode::to_lower(first[0]), unicode::to_upper(first[0])})
    if (first.size() == 1 && unit != first[0]) result.push_back({unit});
  return result;
}

std::vector<std::size_t> first_units(std::size_t count) {
  std::vector<std::size_t> result(count);
  std::iota(result.begin(), result.end(), std::size_t{0});
  return result;
}

}  // namespace

completion_candidates::completion_candidates(text::storage const& storage, text::pos start,
                                             std::u16string_view typed,
                                             std::vector<std::u16string> offered, bool with_words) {
  auto const beginnings = beginnings_of(typed);
  for (std::u16string& word : offered)
    if (std::any_of(beginnings.begin(), beginnings.end(),
                    [&](auto const& beginning) { return word.starts_with(beginning); }))
      offered_.push_back(std::move(word));
  if (with_words)
    words_ = std::make_unique<nearest_words>(
        storage, start, end_of_word(storage.line_units(start.line), start.column), beginnings);
  take_words();
}

bool completion_candidates::is_complete() const {
  return words_ == nullptr || words_->is_complete() || words_->words().size() >= most_words;
}

void completion_candidates::look_further(std::size_t units) {
  constexpr std::size_t units_at_once = 1 << 14;
  for (std::size_t looked = 0; looked < units && !is_complete(); looked += units_at_once)
    words_->look_further(units_at_once);
  take_words();
}

void completion_candidates::take(std::u16string_view word) {
  candidates_.push_back({word, BriskStringRanker(word)});
}

void completion_candidates::take_words() {
  if (words_ != nullptr) {
    auto const& words = words_->words();
    for (; words_taken_ < std::min(words.size(), most_words); ++words_taken_)
      take(words[words_taken_]);
  }
  if (!is_complete() || offered_taken_) return;
  offered_taken_ = true;
  for (std::u16string const& word : offered_)
    if (words_ == nullptr || !words_->contains(word)) take(word);
}

std::vector<platform::completion_row> completion_candidates::rows_for(std::u16string_view typed) {
  std::vector<platform::completion_row> rows;
  struct ranked {
    double score;
    candidate const* item;
  };
  std::vector<ranked> abbreviated;
  std::u16string const letters = BriskStringRanker::prepareFilterString(typed);
  for (candidate const& each : candidates_) {
    if (each.text == typed) continue;
    bool const begins =
        each.text.starts_with(typed) && text::is_cluster_start(each.text, typed.size());
    if (begins) rows.push_back({std::u16string(each.text), first_units(typed.size())});
    double const score = begins ? -1 : each.ranker.scoreForAbbreviation(letters);
    if (score >= 0) abbreviated.push_back({score, &each});
  }
  std::stable_sort(abbreviated.begin(), abbreviated.end(),
                   [](ranked const& a, ranked const& b) { return a.score > b.score; });
  for (ranked const& each : abbreviated)
    rows.push_back(
        {std::u16string(each.item->text), each.item->ranker.maskForAbbreviation(letters)});
  return rows;
}

}  // namespace typing
