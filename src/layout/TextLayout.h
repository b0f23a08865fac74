#pragma once

#include "platform/view.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

/// The grid on which a text view is drawn: every cell is charWidth() wide and every row
/// lineHeight() high, and all coordinates follow from that. Logical pixels; cells, rows and the
/// gutter are whole device pixels, so that none is wider or higher than another on the screen.
class TextLayout {
 public:
  /// Takes the metrics of `f` from the host, and the user's line height and base line deltas.
  void setFont(platform::font const& f, platform::view_host& host);

  platform::font const& font() const { return font_; }

  double charWidth() const { return char_width_; }
  double lineHeight() const { return line_height_; }
  /// From the top of a row down to its base line.
  double ascend() const { return ascend_; }

  /// Where the text area begins, right of the gutter.
  double left() const { return gutter_width_ + left_margin; }
  double top() const { return top_margin; }
  double gutterWidth() const { return gutter_width_; }
  /// The left part of the gutter, where bookmarks are; 0 when they don't show.
  double bookmarkWidth() const { return bookmark_width_; }
  /// By how much images are larger than drawn, next to large letters.
  double imageScale() const { return std::max(1.0, std::round(line_height_ / 20)); }
  /// The right part of the gutter, where the marks of folding are; 0 when they don't show.
  double foldWidth() const { return fold_width_; }
  void setGutterWidth(double width, double bookmark_width, double fold_width);

  double x_of_column(std::size_t column) const;
  double y_of_row(std::size_t row) const {
    return top_margin + static_cast<double>(row) * line_height_;
  }
  /// The row at `y`, which may lie below the last one; 0 above the first.
  std::size_t row_at(double y) const;
  /// The column whose left edge is nearest to `x`.
  std::size_t nearest_column(double x) const;
  /// The column that contains `x`.
  std::size_t column_at(double x) const;

 private:
  static constexpr double left_margin = 4, top_margin = 2;

  double pixels_up(double length) const;

  platform::font font_;
  double pixel_ = 1;
  double char_width_ = 8, line_height_ = 16, ascend_ = 12;
  double gutter_width_ = 0, bookmark_width_ = 0, fold_width_ = 0;
};
