#include "desktop/FontCells.h"

#include "desktop/QtText.h"
#include "platform/clusters.h"
#include "platform/unicode.h"

#include <QFontDatabase>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace widgets {
namespace {

// Texts with many different clusters (long Chinese ones) start over rather than grow for ever.
constexpr std::size_t max_clusters = 8192;

void measure_ink(shaped_cluster& shaped) {
  bool first = true;
  for (QGlyphRun const& run : shaped.runs) {
    QList<quint32> const glyphs = run.glyphIndexes();
    QList<QPointF> const positions = run.positions();
    for (qsizetype i = 0; i < glyphs.size(); ++i) {
      QRectF const box = run.rawFont().boundingRect(glyphs[i]);
      if (box.isEmpty()) continue;
      double const left = positions[i].x() + box.left(), right = positions[i].x() + box.right();
      shaped.left = first ? left : std::min(shaped.left, left);
      shaped.right = first ? right : std::max(shaped.right, right);
      first = false;
    }
  }
}

shaped_cluster shape(QFont const& font, std::u16string_view text) {
  QTextLayout layout(qstring(text), font);
  QTextOption option;
  option.setTextDirection(Qt::LeftToRight);
  option.setUseDesignMetrics(false);
  layout.setTextOption(option);
  layout.beginLayout();
  QTextLine line = layout.createLine();
  layout.endLayout();

  shaped_cluster shaped;
  if (!line.isValid()) return shaped;
  shaped.runs = line.glyphRuns();
  for (QGlyphRun& run : shaped.runs) {
    QList<QPointF> positions = run.positions();
    for (QPointF& p : positions) p.ry() -= line.y() + line.ascent();
    run.setPositions(positions);
  }
  shaped.advance = line.naturalTextWidth();
  measure_ink(shaped);
  return shaped;
}

bool is_emoji(std::u16string_view text) {
  constexpr char16_t text_selector = 0xFE0E, emoji_selector = 0xFE0F;
  if (text.find(text_selector) != text.npos) return false;
  if (text.find(emoji_selector) != text.npos) return true;
  char32_t const c = unicode::code_point_at(text, 0);
  bool const is_flag_letter = c >= 0x1F1E6 && c <= 0x1F1FF;
  bool const is_among_symbols = (c >= 0x231A && c <= 0x2BFF) || c >= 0x1F000;
  bool const is_bracket = c == 0x2329 || c == 0x232A;
  return is_flag_letter || (is_among_symbols && !is_bracket && c < 0x20000 && unicode::is_wide(c));
}

// A letter with marks, in cells of the font, for which it has no way to place the marks: they come
// out in cells of their own, and belong upon the letter.
void stack_marks(shaped_cluster& shaped, double base_advance) {
  for (QGlyphRun& run : shaped.runs) {
    QList<QPointF> positions = run.positions();
    for (QPointF& p : positions)
      if (p.x() >= base_advance - 0.5)
        p.rx() -= std::floor((p.x() + 0.5) / base_advance) * base_advance;
    run.setPositions(positions);
  }
  shaped.advance = base_advance;
  shaped.left = shaped.right = 0;
  measure_ink(shaped);
}

/// The units of the first code point, if all that follow are marks upon it; else 0.
std::size_t base_of_marks(std::u16string_view text) {
  std::size_t at = unicode::splits_pair(text, 1) ? 2 : 1;
  std::size_t const base = at;
  for (; at < text.size(); ++at) {
    char32_t const c = unicode::code_point_at(text, at);
    if (!unicode::is_combining(c) || !unicode::is_zero_width(c)) return 0;
  }
  return base < text.size() ? base : 0;
}

shaped_cluster shape_cluster(QFont const& font, std::u16string_view text) {
  shaped_cluster shaped = shape(font, text);
  if (std::size_t const base = is_emoji(text) ? 0 : base_of_marks(text)) {
    double const advance = shape(font, text.substr(0, base)).advance;
    if (advance > 0 && shaped.advance > advance + 0.5) stack_marks(shaped, advance);
  }
  return shaped;
}

// A text in a script that no font covers is no fault that standard error should hear of, font by
// font.
void silence_font_search() {
  static QtMessageHandler next = nullptr;
  next = qInstallMessageHandler(
      [](QtMsgType type, QMessageLogContext const& context, QString const& message) {
        if (!message.contains(QLatin1String("OpenType support missing")))
          next(type, context, message);
      });
}

}  // namespace

FontFace::FontFace(QFont const& font) : font_(font), raw_(QRawFont::fromFont(font)) {
  std::array<QChar, last_direct - first_direct> characters;
  for (std::size_t i = 0; i < characters.size(); ++i)
    characters[i] = QChar(static_cast<char16_t>(first_direct + i));
  int count = static_cast<int>(direct_.size());
  raw_.glyphIndexesForChars(characters.data(), count, direct_.data(), &count);
  // Controls have no business in a line of glyphs, whatever pictures a font has for them.
  std::fill(direct_.begin() + (0x7F - first_direct), direct_.begin() + (0xA0 - first_direct), 0);
}

quint32 FontFace::other_glyph(char16_t unit) {
  auto const [it, fresh] = others_.try_emplace(unit, 0);
  if (!fresh || unit < first_direct || QChar::isSurrogate(unit)) return it->second;
  QChar const character(unit);
  int count = 1;
  raw_.glyphIndexesForChars(&character, 1, &it->second, &count);
  return it->second;
}

// Text fonts have some emoji, too, each drawn alone and without its colours.
QFont const& FontFace::font_for(std::u16string_view text) {
  if (!is_emoji(text)) return font_;
  if (!emoji_font_) {
    emoji_font_ = font_;
    QStringList families = font_.families();
    families.prepend(QStringLiteral("emoji"));
    families.prepend(QStringLiteral("Noto Color Emoji"));
    emoji_font_->setFamilies(families);
    emoji_font_->setFixedPitch(false);
  }
  return *emoji_font_;
}

shaped_cluster const& FontFace::cluster(std::u16string_view text) {
  auto it = clusters_.find(std::u16string(text));
  if (it != clusters_.end()) return it->second;
  if (clusters_.size() >= max_clusters) clusters_.clear();
  return clusters_.emplace(text, shape_cluster(font_for(text), text)).first->second;
}

FontCells::FontCells(platform::font const& font, double device_pixel_ratio)
    : font_(font), ratio_(device_pixel_ratio) {
  QRawFont const raw = face(false, false).raw();
  quint32 const glyph = face(false, false).glyph(u'm');
  QPointF advance;
  raw.advancesForGlyphIndexes(&glyph, &advance, 1);
  metrics_.ascender = raw.ascent();
  metrics_.descender = -raw.descent();
  metrics_.pixel = 1 / ratio_;
  metrics_.char_width = std::max(1.0, std::round(advance.x() * ratio_)) / ratio_;
}

FontFace& FontCells::face(bool bold, bool italic) {
  std::unique_ptr<FontFace>& face = faces_[(bold ? 1 : 0) + (italic ? 2 : 0)];
  if (!face) face = std::make_unique<FontFace>(qfont(bold, italic));
  return *face;
}

QFont FontCells::qfont(bool bold, bool italic) const {
  QFont font = font_.family.empty() ? QFontDatabase::systemFont(QFontDatabase::FixedFont)
                                    : QFont(qstring(font_.family));
  font.setStyleHint(QFont::Monospace);
  font.setFixedPitch(true);
  bool const is_size = font_.point_size >= 1;  // not so for what is no number
  font.setPointSizeF(is_size ? std::min(font_.point_size, 1000.0) : 1);
  font.setBold(bold);
  font.setItalic(italic);
  font.setKerning(false);
  if (!font_.anti_alias) font.setStyleStrategy(QFont::NoAntialias);
  return font;
}

std::shared_ptr<FontCells> cells_for(platform::font const& font, double device_pixel_ratio) {
  static std::vector<std::weak_ptr<FontCells>> known;
  std::erase_if(known, [](auto const& entry) { return entry.expired(); });
  for (auto const& entry : known)
    if (auto cells = entry.lock();
        cells && cells->font() == font && cells->device_pixel_ratio() == device_pixel_ratio)
      return cells;
  [[maybe_unused]] static bool const quiet = (silence_font_search(), true);
  auto cells = std::make_shared<FontCells>(font, device_pixel_ratio);
  known.push_back(cells);
  return cells;
}

}  // namespace widgets
