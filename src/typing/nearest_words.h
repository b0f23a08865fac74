#pragma once

#include "text/char_types.h"
#include "text/pos.h"

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace text {
struct storage;
}

namespace typing {

/// Where the word that begins or continues at `from` <= line.size() ends: `from` if none does. A
/// word is a run of clusters that begin with a word character.
std::size_t end_of_word(text::unit_view line, std::size_t from);

/// The words of a text that begin with some letters, the nearest to a word first: those before it
/// on its line from right to left, those after it from left to right, and so on with the line
/// above, the line below, the second line above. A word that stands in several places counts where
/// it is nearest.
///
/// The search goes outward, so the first words are known after a look at the lines around, and goes
/// on where it has stopped. Meanwhile the given word may be changed, and nothing else; other
/// changes make the answer wrong, but do no harm. Takes time in proportion to the text; tested
/// against sorting all words by distance.
class nearest_words {
 public:
  /// The word stands from `first` to the column `last` of that line, and isn't counted itself. A
  /// word is found if it begins with one of `beginnings`, none of which is empty, and is longer.
  /// The storage must outlive this.
  nearest_words(text::storage const& storage, text::pos const& first, std::size_t last,
                std::vector<std::u16string> beginnings);
  nearest_words(nearest_words const&) = delete;
  nearest_words& operator=(nearest_words const&) = delete;

  /// Looks at about so many units more.
  void look_further(std::size_t units);
  bool is_complete() const { return complete_; }
  /// Those found until now; later ones are added at the end.
  std::deque<std::u16string> const& words() const { return words_; }
  bool contains(std::u16string_view word) const { return known_.contains(word); }

 private:
  struct place {
    std::size_t first, last;
    bool operator<(place const& other) const { return first < other.first; }
  };

  bool exists() const;
  std::size_t line() const { return before_ ? line_ - distance_ : line_ + distance_; }
  void enter_next();
  std::size_t look_at_chunk();
  void find_in(text::unit_view line, std::size_t first, std::size_t last);
  void add(std::u16string_view word);

  text::storage const& storage_;
  std::size_t const line_, units_after_;
  std::vector<std::u16string> const beginnings_;
  /// Where the search stands: on the lines before or after the word, at this distance, with so many
  /// units left up to the outer end.
  std::size_t distance_ = 0;
  bool before_ = true;
  std::size_t rest_;
  bool complete_ = false;
  std::vector<place> found_;
  std::deque<std::u16string> words_;  // stay where they are
  std::unordered_set<std::u16string_view> known_;
};

}  // namespace typing
