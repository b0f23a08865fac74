#pragma once

#include "platform/completion_list.h"
#include "projects/BriskStringRanker.h"
#include "text/pos.h"
#include "typing/nearest_words.h"

#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace typing {

/// What a list offers while a word is typed: words of the text and of the scope with the same first
/// letter, in either case. Kept while letters are typed; only that word may change meanwhile (see
/// nearest_words).
class completion_candidates {
 public:
  /// Of the words of a text at most this many are offered, the nearest.
  static constexpr std::size_t most_words = 5000;

  /// For the word that `typed` (not empty) is the start of, at `start`. `offered` comes after the
  /// words of the text, which are left out without `with_words`.
  completion_candidates(text::storage const& storage, text::pos start, std::u16string_view typed,
                        std::vector<std::u16string> offered, bool with_words);

  /// Looks at about so many units of the text more.
  void look_further(std::size_t units);
  bool is_complete() const;

  /// Those that fit what has been typed and are more: first those that begin with it, the nearest
  /// first, then those of which it is an abbreviation, the best first.
  std::vector<platform::completion_row> rows_for(std::u16string_view typed);

 private:
  struct candidate {
    std::u16string_view text;
    BriskStringRanker ranker;
  };

  void take(std::u16string_view word);
  void take_words();

  std::unique_ptr<nearest_words> words_;
  std::vector<std::u16string> offered_;
  std::size_t words_taken_ = 0;
  bool offered_taken_ = false;
  std::deque<candidate> candidates_;
};

}  // namespace typing
