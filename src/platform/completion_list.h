#pragma once

#include "platform/geometry.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace platform {

struct completion_row {
  std::u16string text;
  std::vector<std::size_t> matched;  ///< the units that have been typed, ascending
  friend bool operator==(completion_row const&, completion_row const&) = default;
};

/// A small list under a word, in the text's font and with matched letters in bold. It takes no
/// focus: keys stay with the view, whose logic selects rows. Main thread only.
class completion_list {
 public:
  virtual ~completion_list() = default;

  /// Shows these rows, at least one, under or over `word`, a place in the view's coordinates, in
  /// place of those shown before.
  virtual void show_rows(std::vector<completion_row> rows, std::size_t selected,
                         rect const& word) = 0;
  /// Of those that are shown.
  virtual void select_row(std::size_t row) = 0;
  virtual void hide_rows() = 0;

  /// Called when a row is clicked, as a task of waiting.h.
  std::function<void(std::size_t row)> clicked;
};

}  // namespace platform
