#pragma once

#include "desktop/FontCells.h"
#include "platform/graphics.h"

#include <QGlyphRun>
#include <QPainter>

#include <vector>

namespace widgets {

/// Paints a view. `origin` is the point of the view at the painter's origin; it is subtracted here
/// and not by the painter, whose glyph positions overflow in views of some million lines.
class QtGraphics final : public platform::graphics {
 public:
  QtGraphics(QPainter& painter, FontCells& cells, platform::point origin);

  void fill_rect(platform::rect const& r, platform::color c, bool composite) override;
  void draw_run(std::u16string_view run, platform::point baseline, double cell_width,
                platform::text_style const& style) override;
  void draw_cluster(std::u16string_view cluster, platform::point baseline, double width,
                    platform::text_style const& style) override;
  void draw_image(std::string_view name, platform::rect const& r) override;
  void push_clip(platform::rect const& r) override;
  void pop_clip() override;

 private:
  double whole_pixels(double length, double corner = 0) const;
  QPointF local_pixel(platform::point p) const;
  QRectF local_pixels(platform::rect const& r) const;
  void set_pen(platform::text_style const& style);
  void flush_glyphs(FontFace const& face);
  void draw_fitted(FontFace& face, std::u16string_view text, QPointF at, double width);
  void underline(FontFace const& face, QPointF at, double width, platform::color c);

  QPainter& painter_;
  FontCells& cells_;
  platform::point origin_;
  double ratio_;
  QPointF corner_;  // in device pixels: at 125 %, where a widget begins may lie inside of one
  QGlyphRun run_;
  std::vector<quint32> glyphs_;
  std::vector<QPointF> positions_;
};

}  // namespace widgets
