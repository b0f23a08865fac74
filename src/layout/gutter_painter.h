#pragma once

#include "layout/TextLayout.h"
#include "styles/view_colors.h"

namespace text {
class view;
}

namespace layout {

/// Paints the gutter: line numbers, bookmarks, marks of folds and of wrapped rows. Used for as long
/// as something is drawn.
class gutter_painter {
 public:
  struct parts {
    bool line_numbers, wrap_marks;  ///< the others show where the layout has room for them
    bool current_line;              ///< the caret's row is shaded
  };

  /// Nothing outside of `clip` is filled. The references must outlive the painter.
  gutter_painter(platform::graphics& g, text::view const& view, TextLayout const& layout,
                 styles::view_colors const& colors, platform::rect const& clip, parts shown)
      : g_(g), view_(view), layout_(layout), colors_(colors), clip_(clip), shown_(shown) {}

  /// The rows of a closed range, in the gutter's rectangle.
  void paint(platform::rect const& gutter, std::size_t first_row, std::size_t last_row);

 private:
  void shade_current_row(platform::rect const& gutter);
  void paint_fold_mark(platform::rect const& gutter, std::size_t row, std::size_t line);
  void paint_bookmark(platform::rect const& gutter, std::size_t row);
  void paint_wrap_mark(platform::rect const& gutter, std::size_t row);
  void paint_line_number(platform::rect const& gutter, std::size_t row, std::size_t number,
                         bool current);

  platform::graphics& g_;
  text::view const& view_;
  TextLayout const& layout_;
  styles::view_colors const& colors_;
  platform::rect clip_;
  parts shown_;
};

}  // namespace layout
