#pragma once

#include "text/views/view.h"

#include <cstddef>
#include <utility>

namespace layout {

/// How far the lines at the stops of indentation reach: a row shows one at each tab stop before its
/// depth. Used for as long as something is drawn; rows are asked for from top to bottom.
class indent_guides {
 public:
  explicit indent_guides(text::view const& view) : view_(view) {}

  /// In columns. Blank lines take it from the lines around them, so that a guide runs through.
  std::size_t depth_of_row(std::size_t row);

  /// The lines, half open, whose depth may depend on those from `first` up to `last`: with the
  /// blank ones next to them.
  static std::pair<std::size_t, std::size_t> affected_lines(text::storage const& storage,
                                                            std::size_t first, std::size_t last);

  /// What the blank lines next to a line may depend on: its depth and how it begins.
  static std::size_t outline_of(text::view const& view, std::size_t line);

 private:
  std::size_t depth_of_line(std::size_t line);
  std::size_t depth_of_blank_lines(std::size_t first, std::size_t last) const;

  text::view const& view_;
  std::size_t blank_first_ = 0, blank_last_ = 0;  // half open, the last blank lines asked about
  std::size_t blank_depth_ = 0;
};

}  // namespace layout
