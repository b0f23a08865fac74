#pragma once

#include "platform/geometry.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace platform {

struct color {
  std::uint8_t red = 0, green = 0, blue = 0, alpha = 255;
  friend bool operator==(color const&, color const&) = default;
};

struct text_style {
  color foreground;
  bool bold = false, italic = false, underline = false;
  friend bool operator==(text_style const&, text_style const&) = default;
};

struct font {
  std::string family;
  double point_size = 12;
  bool anti_alias = true;
  friend bool operator==(font const&, font const&) = default;
};

/// Measures in logical pixels. The descender is negative: it lies below the base line.
struct font_metrics {
  double ascender = 0, descender = 0;
  double char_width = 0;  // advance of one cell
  double pixel = 1;       // the side of a device pixel
};

/// Where a view paints. Valid during one draw call only.
class graphics {
 public:
  virtual ~graphics() = default;

  /// With `composite` the colour's alpha blends with what is there, otherwise it replaces it.
  virtual void fill_rect(rect const& r, color c, bool composite = false) = 0;

  /// Draws units that take one cell each, the first at `baseline`, all `cell_width` apart.
  virtual void draw_run(std::u16string_view run, point baseline, double cell_width,
                        text_style const& style) = 0;

  /// Draws one user-perceived character made of several units, or one that may be wider than its
  /// cell, or joined letters: made smaller where they would not fit into `width`. A width of 0 is
  /// that of a mark without a character of its own.
  virtual void draw_cluster(std::u16string_view cluster, point baseline, double width,
                            text_style const& style) = 0;

  /// Draws the named image of the program, scaled into `r`.
  virtual void draw_image(std::string_view name, rect const& r) = 0;

  /// Restricts drawing to `r` until the matching pop_clip.
  virtual void push_clip(rect const& r) = 0;
  virtual void pop_clip() = 0;
};

}  // namespace platform
