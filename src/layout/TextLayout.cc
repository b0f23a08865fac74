#include "layout/TextLayout.h"

#include "settings/store.h"

#include <algorithm>
#include <cmath>

void TextLayout::setFont(platform::font const& f, platform::view_host& host) {
  auto& defaults = settings::store();
  font_ = f;
  host.set_font(f);
  platform::font_metrics const metrics = host.metrics_for(f);
  double const delta = static_cast<double>(defaults.integer("WynLineHeightDelta"));
  pixel_ = metrics.pixel;
  char_width_ = std::max(1.0, metrics.char_width);
  line_height_ =
      pixels_up(std::max(1.0, std::ceil(metrics.ascender - metrics.descender) + 2 + delta));
  ascend_ = std::round(metrics.ascender + defaults.real("WynBaselineDelta")) + 1;
}

double TextLayout::x_of_column(std::size_t column) const {
  return left() + std::round(static_cast<double>(column) * char_width_ / pixel_) * pixel_;
}

void TextLayout::setGutterWidth(double width, double bookmark_width, double fold_width) {
  gutter_width_ = pixels_up(width);
  bookmark_width_ = bookmark_width;
  fold_width_ = fold_width;
}

// A little less than a pixel more is an error of division.
double TextLayout::pixels_up(double length) const {
  return std::ceil(length / pixel_ - 1e-6) * pixel_;
}

std::size_t TextLayout::row_at(double y) const {
  return static_cast<std::size_t>(std::max(0.0, std::floor((y - top_margin) / line_height_)));
}

std::size_t TextLayout::nearest_column(double x) const {
  return static_cast<std::size_t>(std::max(0.0, std::round((x - left()) / char_width_)));
}

std::size_t TextLayout::column_at(double x) const {
  return static_cast<std::size_t>(std::max(0.0, std::floor((x - left()) / char_width_)));
}
