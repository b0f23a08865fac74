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
  /// Which characters have a mark in their place: tabs and line ends with either.
  struct marks {
    bool invisibles;  ///< no-break spaces and control characters
    bool blanks;      ///< spaces
  };

  /// Nothing outside of `clip` is filled. The references must outlive the painter.
  row_painter(platform::graphics& g, TextLayout const& layout, styles::view_colors const& colors,
              platform::rect const& clip, marks shown)
      : g_(g), layout_(layout), colors_(colors), clip_(clip), shown_(shown) {}

  /// One rectangle for what follows each other on the same colour, so that the background of a
  /// scope spans those inside. A scope that continues in the next row fills this one to its end.
  void paint_backgrounds(row_text const& text, std::size_t row);
  /// With `ends_line` the end of the line may have a mark. Characters without a cell that hide in
  /// a text, or change the order in which it is read, always have one.
  void paint_row(row_text const& text, std::size_t row, bool ends_line);
  /// The part of an area that is in the clip; translucent colours are blended.
  void fill(platform::rect const& area, platform::color c);

 private:
  void paint_background(std::size_t row, double left, double right, platform::color c);
  void paint_piece(row_text const& text, text_cells::piece const& piece, double baseline);
  void paint_run(row_text const& text, text_cells::piece const& piece, std::u16string_view units,
                 double baseline);
  bool is_shown_invisible(char16_t u) const;
  void paint_blanks(text_cells::piece const& piece, std::u16string_view units, double baseline);
  void paint_risks(row_text const& text, text_cells::piece const& piece, double baseline);
  void paint_risk(double x, double baseline);
  void paint_mark(char16_t mark, std::size_t column, double baseline);

  platform::graphics& g_;
  TextLayout const& layout_;
  styles::view_colors const& colors_;
  platform::rect clip_;
  marks shown_;
};

}  // namespace layout
