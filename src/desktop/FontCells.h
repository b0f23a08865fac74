#pragma once

#include "platform/graphics.h"

#include <QFont>
#include <QGlyphRun>
#include <QList>
#include <QRawFont>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace widgets {

/// Text that its font can't show cell by cell, shaped once: glyphs of any fonts, relative to the
/// start of the base line.
struct shaped_cluster {
  QList<QGlyphRun> runs;
  double advance = 0;
  double left = 0, right = 0;  // where ink begins and ends
};

/// One variant of a fixed-pitch font: from characters to glyph numbers, looked up once each.
class FontFace {
 public:
  explicit FontFace(QFont const& font);

  /// 0 when the font has no glyph for it.
  quint32 glyph(char16_t unit) {
    if (unit >= first_direct && unit < last_direct) return direct_[unit - first_direct];
    return other_glyph(unit);
  }
  /// Takes glyphs from other fonts where this one has none. Valid until the next call.
  shaped_cluster const& cluster(std::u16string_view text);
  QRawFont const& raw() const { return raw_; }

 private:
  // Latin with its usual accents: what nearly all program text is made of.
  static constexpr char16_t first_direct = 0x20, last_direct = 0x250;

  quint32 other_glyph(char16_t unit);
  QFont const& font_for(std::u16string_view text);

  QFont font_;
  std::optional<QFont> emoji_font_;  // made when first needed
  QRawFont raw_;
  std::array<quint32, last_direct - first_direct> direct_{};
  std::unordered_map<char16_t, quint32> others_;
  std::unordered_map<std::u16string, shaped_cluster> clusters_;
};

/// A font as the text grid uses it: its cell, and its four faces, made when first asked for.
class FontCells {
 public:
  FontCells(platform::font const& font, double device_pixel_ratio);

  platform::font const& font() const { return font_; }
  double device_pixel_ratio() const { return ratio_; }
  /// The cell is a whole number of device pixels wide, so that all columns look the same.
  platform::font_metrics const& metrics() const { return metrics_; }
  FontFace& face(bool bold, bool italic);

 private:
  QFont qfont(bool bold, bool italic) const;

  platform::font font_;
  double ratio_;
  platform::font_metrics metrics_;
  std::array<std::unique_ptr<FontFace>, 4> faces_;
};

/// The cells of a font, shared by all views of the process.
std::shared_ptr<FontCells> cells_for(platform::font const& font, double device_pixel_ratio);

}  // namespace widgets
