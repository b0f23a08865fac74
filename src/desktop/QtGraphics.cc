#include "desktop/QtGraphics.h"

#include "desktop/ImageStore.h"

#include <cmath>

namespace widgets {
namespace {

QColor qcolor(platform::color c) {
  return QColor(c.red, c.green, c.blue, c.alpha);
}

}  // namespace

QtGraphics::QtGraphics(QPainter& painter, FontCells& cells, platform::point origin)
    : painter_(painter),
      cells_(cells),
      origin_(origin),
      ratio_(painter.device()->devicePixelRatioF()),
      corner_(painter.deviceTransform().map(QPointF())) {}

// Coordinates with the same fraction go the same way, also those with a half, which are not exact.
double QtGraphics::whole_pixels(double length, double corner) const {
  return (std::floor(length * ratio_ + corner + 0.5 + 1e-5) - corner) / ratio_;
}

// Glyphs start at whole device pixels: they are sharper, and cached once instead of by fraction.
QPointF QtGraphics::local_pixel(platform::point p) const {
  return {whole_pixels(p.x - origin_.x, corner_.x()), whole_pixels(p.y - origin_.y, corner_.y())};
}

// So do areas, which have to fit the glyphs.
QRectF QtGraphics::local_pixels(platform::rect const& r) const {
  return {local_pixel({r.x, r.y}), local_pixel({r.x + r.width, r.y + r.height})};
}

void QtGraphics::fill_rect(platform::rect const& r, platform::color c, bool composite) {
  // The window itself is opaque: what replaces everything below can't let anything through.
  if (!composite) c.alpha = 255;
  painter_.fillRect(local_pixels(r), qcolor(c));
}

void QtGraphics::set_pen(platform::text_style const& style) {
  QColor const color = qcolor(style.foreground);
  if (painter_.pen().color() != color) painter_.setPen(color);
}

void QtGraphics::draw_run(std::u16string_view run, platform::point baseline, double cell_width,
                          platform::text_style const& style) {
  FontFace& face = cells_.face(style.bold, style.italic);
  set_pen(style);
  for (std::size_t i = 0; i < run.size(); ++i) {
    if (run[i] == u' ' || run[i] == u'\u00A0') continue;
    QPointF const at = local_pixel({baseline.x + static_cast<double>(i) * cell_width, baseline.y});
    if (quint32 const glyph = face.glyph(run[i])) {
      glyphs_.push_back(glyph);
      positions_.push_back(at);
    } else {
      draw_fitted(face, run.substr(i, 1), at, cell_width);
    }
  }
  flush_glyphs(face);
  if (style.underline)
    underline(face, local_pixel(baseline), static_cast<double>(run.size()) * cell_width,
              style.foreground);
}

void QtGraphics::flush_glyphs(FontFace const& face) {
  if (glyphs_.empty()) return;
  run_.setRawFont(face.raw());
  run_.setRawData(glyphs_.data(), positions_.data(), static_cast<int>(glyphs_.size()));
  painter_.drawGlyphRun({}, run_);
  glyphs_.clear();
  positions_.clear();
}

void QtGraphics::draw_cluster(std::u16string_view cluster, platform::point baseline, double width,
                              platform::text_style const& style) {
  FontFace& face = cells_.face(style.bold, style.italic);
  QPointF const at = local_pixel(baseline);
  set_pen(style);
  draw_fitted(face, cluster, at, width);
  if (style.underline) underline(face, at, width, style.foreground);
}

// A cluster narrower than its room stands in the middle of it, a wider one is made smaller, as far
// as it can be read then, and ink that still reaches over the edges is cut off. What has no room of
// its own is drawn upon its neighbours.
void QtGraphics::draw_fitted(FontFace& face, std::u16string_view text, QPointF at, double width) {
  shaped_cluster const& shaped = face.cluster(text);
  if (shaped.runs.isEmpty() || (width > 0 && width * ratio_ < 1)) return;
  constexpr double least_scale = 0.5;
  double const natural = std::max(shaped.advance, shaped.right);
  bool const fits = natural <= width || width == 0;
  double const scale = fits ? 1 : std::max(width / natural, least_scale);
  double const shift = fits && width > 0 ? whole_pixels((width - natural) / 2) : 0;
  bool const clips = width > 0 && (shaped.left * scale + shift < -0.5 ||
                                   shaped.right * scale + shift > width + 0.5);
  bool const transforms = scale != 1 || clips;

  if (transforms) painter_.save();
  if (clips) painter_.setClipRect(QRectF(at.x(), at.y() - 4096, width, 8192), Qt::IntersectClip);
  QPointF from(at.x() + shift, at.y());
  if (scale != 1) {
    painter_.setRenderHint(QPainter::SmoothPixmapTransform);
    painter_.translate(at);
    painter_.scale(scale, scale);
    from = {};
  }
  for (QGlyphRun const& run : shaped.runs) painter_.drawGlyphRun(from, run);
  if (transforms) painter_.restore();
}

void QtGraphics::underline(FontFace const& face, QPointF at, double width, platform::color c) {
  double const thickness = std::max(1.0, std::round(face.raw().lineThickness() * ratio_)) / ratio_;
  double const below = std::max(1.0, std::round(face.raw().underlinePosition() * ratio_)) / ratio_;
  painter_.fillRect(QRectF(at.x(), at.y() + below, width, thickness), qcolor(c));
}

void QtGraphics::draw_image(std::string_view name, platform::rect const& r) {
  QRectF const target(local_pixel({r.x, r.y}), QSizeF(r.width, r.height));
  QSize const pixels = (target.size() * ratio_).toSize();
  QImage const& small = image_named(name, 1);
  QImage const& image = small.width() < pixels.width() ? image_named(name, 2) : small;
  if (image.isNull()) return;
  bool const exact = image.size() == pixels;
  painter_.setRenderHint(QPainter::SmoothPixmapTransform, !exact);
  painter_.drawImage(target, image);
}

void QtGraphics::push_clip(platform::rect const& r) {
  painter_.save();
  painter_.setClipRect(local_pixels(r), Qt::IntersectClip);
}

void QtGraphics::pop_clip() {
  painter_.restore();
}

}  // namespace widgets
