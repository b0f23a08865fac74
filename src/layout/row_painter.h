#pragma once

#include "layout/TextLayout.h"
#include "layout/row_text.h"
#include "styles/view_colors.h"

namespace layout {

/// Paints rows of text on the grid of a layout, in a text view or on a page: the backgrounds of
/// scopes, then, over what the caller paints between, the letters. Rows count from the top of the
/// layout. Used for as long as something is drawn.
class row_painter {
 public:
  /// Nothing outside of `clip` is filled. The references must outlive the painter.
  row_painter(platform::graphics& g, TextLayout const& layout, styles::view_colors const& colors,
              platform::rect const& clip, bool show_invisibles)
      : g_(g), layout_(layout), colors_(colors), clip_(clip), show_invisibles_(show_invisibles) {}

  /// One rectangle for what follows each other on the same colour, so that the background of a
  /// scope spans those inside. A scope that continues in the next row fills this one to its end.
  void paint_backgrounds(row_text const& text, std::size_t row);
  /// With `ends_line` a mark shows the end of the line where invisibles show.
  void paint_row(row_text const& text, std::size_t row, bool ends_line);
  /// The part of an area that is in the clip; translucent colours are blended.
  void fill(platform::rect const& area, platform::color c);

 private:
  void paint_background(std::size_t row, double left, double right, platform::color c);
  void paint_piece(row_text const& text, text_cells::piece const& piece, double baseline);
  void paint_run(row_text const& text, text_cells::piece const& piece, std::u16string_view units,
                 double baseline);
  bool is_shown_invisible(char16_t u) const;
  void paint_mark(char16_t mark, std::size_t column, double baseline);

  platform::graphics& g_;
  TextLayout const& layout_;
  styles::view_colors const& colors_;
  platform::rect clip_;
  bool show_invisibles_;
};

}  // namespace layout
