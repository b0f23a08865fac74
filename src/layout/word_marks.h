#pragma once

#include "platform/geometry.h"
#include "text/views/view_iterator.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace layout {
class laid_out_view;

/// The other places of a word that is selected, in what can be seen and nowhere else: in long lines
/// the columns beside it are left out, too. Main thread only.
class word_marks {
 public:
  using place = std::pair<text::iterator, text::iterator>;

  explicit word_marks(laid_out_view const& view) : view_(view) {}

  /// The selection or the text may be others now, or the marks `wanted` or not any more: has what
  /// changes drawn.
  void follow(bool wanted);
  /// Forgets the word, and has nothing drawn.
  void reset() { word_.clear(); }

  /// In order, without the selection itself. Looked for again if the word, the text or what is seen
  /// has changed.
  std::vector<place> const& places() const;

 private:
  struct window {
    std::size_t first_row, last_row, first_column, last_column;  // closed
    std::uint32_t memento;
    std::size_t rows;
    text::pos selected;
    bool operator==(window const&) const = default;
  };
  window seen() const;
  void search(window const& seen) const;
  void mark_for_display() const;

  laid_out_view const& view_;
  std::u16string word_;  // empty for none
  mutable window searched_{};
  mutable std::u16string searched_word_;
  mutable std::vector<place> places_;
};

/// The word that is selected, neither more nor less; empty without one.
std::u16string selected_word(text::view const& view);

}  // namespace layout
