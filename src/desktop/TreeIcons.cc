#include "desktop/TreeIcons.h"

#include <QPainterPath>

namespace widgets {
namespace {

using platform::tree_icon;

// Of middle lightness, so that it is seen on light and dark ground.
QColor tint_of(tree_icon icon) {
  switch (icon) {
    case tree_icon::folder:
      return {0xC7, 0x92, 0x2B};
    case tree_icon::group:
      return {0x8A, 0x6F, 0xC4};
    case tree_icon::source:
      return {0x3C, 0x83, 0xC8};
    case tree_icon::markup:
      return {0xC9, 0x6A, 0x3A};
    case tree_icon::image:
      return {0x4C, 0x9A, 0x52};
    case tree_icon::archive:
      return {0x9A, 0x76, 0x4C};
    case tree_icon::text:
    case tree_icon::file:
      break;
  }
  return {0x80, 0x86, 0x8B};
}

// In parts of the icon's side.
QPointF at(QRectF const& area, double x, double y) {
  return {area.x() + x * area.width(), area.y() + y * area.height()};
}

QPainterPath folder(QRectF const& area, bool is_open) {
  QPainterPath path(at(area, 0.06, 0.22));
  path.lineTo(at(area, 0.38, 0.22));
  path.lineTo(at(area, 0.48, 0.34));
  path.lineTo(at(area, 0.94, 0.34));
  path.lineTo(at(area, is_open ? 0.84 : 0.94, 0.84));
  path.lineTo(at(area, 0.06, 0.84));
  path.closeSubpath();
  return path;
}

QPainterPath page(QRectF const& area) {
  QPainterPath path(at(area, 0.18, 0.06));
  path.lineTo(at(area, 0.60, 0.06));
  path.lineTo(at(area, 0.84, 0.30));
  path.lineTo(at(area, 0.84, 0.94));
  path.lineTo(at(area, 0.18, 0.94));
  path.closeSubpath();
  path.moveTo(at(area, 0.60, 0.06));
  path.lineTo(at(area, 0.60, 0.30));
  path.lineTo(at(area, 0.84, 0.30));
  return path;
}

// What tells one kind of file from another without its colour.
QPainterPath sign_of(tree_icon icon, QRectF const& area) {
  QPainterPath path;
  auto const line = [&](double x1, double y1, double x2, double y2) {
    path.moveTo(at(area, x1, y1));
    path.lineTo(at(area, x2, y2));
  };
  switch (icon) {
    case tree_icon::text:
      for (double const y : {0.48, 0.63, 0.78}) line(0.32, y, y > 0.7 ? 0.54 : 0.70, y);
      break;
    case tree_icon::source:
      line(0.44, 0.50, 0.32, 0.64);
      line(0.32, 0.64, 0.44, 0.78);
      line(0.58, 0.50, 0.70, 0.64);
      line(0.70, 0.64, 0.58, 0.78);
      break;
    case tree_icon::markup:
      line(0.32, 0.52, 0.70, 0.52);
      line(0.42, 0.66, 0.70, 0.66);
      line(0.42, 0.80, 0.62, 0.80);
      break;
    case tree_icon::image:
      line(0.28, 0.80, 0.44, 0.58);
      line(0.44, 0.58, 0.56, 0.72);
      line(0.56, 0.72, 0.64, 0.62);
      line(0.64, 0.62, 0.76, 0.80);
      break;
    case tree_icon::archive:
      for (double const y : {0.20, 0.38, 0.56, 0.74}) line(0.36, y, 0.48, y);
      break;
    case tree_icon::file:
    case tree_icon::folder:
    case tree_icon::group:
      break;
  }
  return path;
}

}  // namespace

void draw_tree_icon(QPainter& painter, QRectF const& area, platform::tree_row const& row,
                    QColor const& text, bool is_tinted) {
  bool const is_folder = row.icon == tree_icon::folder || row.icon == tree_icon::group;
  QColor color = is_tinted ? tint_of(row.icon) : text;
  if (row.is_missing || row.is_pale) color.setAlphaF(0.5f);
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(color, area.width() / 13, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  QColor fill = color;
  fill.setAlphaF(is_folder ? color.alphaF() * 0.55f : 0.08f);
  painter.setBrush(row.is_missing ? QBrush(Qt::NoBrush) : QBrush(fill));
  painter.drawPath(is_folder ? folder(area, row.is_open) : page(area));
  painter.setBrush(Qt::NoBrush);
  painter.drawPath(sign_of(row.icon, area));
  if (row.is_link) {
    painter.setPen(QPen(text, area.width() / 10, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    QPainterPath arrow(at(area, 0.02, 0.98));
    arrow.lineTo(at(area, 0.36, 0.64));
    arrow.moveTo(at(area, 0.12, 0.62));
    arrow.lineTo(at(area, 0.38, 0.62));
    arrow.lineTo(at(area, 0.38, 0.88));
    painter.drawPath(arrow);
  }
  painter.restore();
}

void draw_tree_arrow(QPainter& painter, QRectF const& area, bool is_open, QColor const& color) {
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(color, area.width() / 9, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  QPolygonF const open{at(area, 0.28, 0.40), at(area, 0.50, 0.62), at(area, 0.72, 0.40)};
  QPolygonF const closed{at(area, 0.40, 0.28), at(area, 0.62, 0.50), at(area, 0.40, 0.72)};
  painter.drawPolyline(is_open ? open : closed);
  painter.restore();
}

}  // namespace widgets
