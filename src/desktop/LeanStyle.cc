#include "desktop/LeanStyle.h"

#include <QPainter>
#include <QStyleOptionMenuItem>

#include <algorithm>

namespace widgets {

void LeanStyle::drawControl(ControlElement element, QStyleOption const* option, QPainter* painter,
                            QWidget const* widget) const {
  auto const* const item = qstyleoption_cast<QStyleOptionMenuItem const*>(option);
  if (element != CE_MenuItem || item == nullptr || !item->text.endsWith(tab_sign))
    return QProxyStyle::drawControl(element, option, painter, widget);
  QStyleOptionMenuItem without = *item;
  qsizetype const tab = item->text.indexOf(QLatin1Char('\t'));
  qsizetype const divider = item->text.lastIndexOf(key_divider);
  QString const trigger = item->text.mid(std::max(tab, divider) + 1);
  QString const key = divider > tab ? item->text.mid(tab + 1, divider - tab - 1) : QString();
  without.text = item->text.left(tab);
  QProxyStyle::drawControl(element, &without, painter, widget);
  constexpr int margin = 12, padding = 5;
  int const width = item->fontMetrics.horizontalAdvance(trigger) + 2 * padding;
  QRect const area = QRect(item->rect.right() - margin - width, item->rect.top() + 2, width,
                           item->rect.height() - 4);
  bool const is_selected = item->state & State_Selected;
  QColor const letters =
      item->palette.color(item->state & State_Enabled ? QPalette::Active : QPalette::Disabled,
                          is_selected ? QPalette::HighlightedText : QPalette::WindowText);
  QColor ground = letters;
  ground.setAlphaF(0.15f);
  painter->save();
  painter->setRenderHint(QPainter::Antialiasing);
  painter->setPen(Qt::NoPen);
  painter->setBrush(ground);
  painter->drawRoundedRect(area, 4, 4);
  painter->setPen(letters);
  painter->setFont(item->font);
  painter->drawText(area, Qt::AlignCenter, trigger);
  QRect const before(item->rect.topLeft(), QPoint(area.left() - margin, item->rect.bottom()));
  painter->drawText(before, Qt::AlignRight | Qt::AlignVCenter, key);
  painter->restore();
}

void LeanStyle::drawPrimitive(PrimitiveElement element, QStyleOption const* option,
                              QPainter* painter, QWidget const* widget) const {
  QProxyStyle::drawPrimitive(element, option, painter, widget);
  bool const is_dark = option->palette.color(QPalette::Window).lightness() < 128;
  if (element != PE_IndicatorCheckBox || !is_dark) return;
  QColor edge = option->palette.color(QPalette::Text);
  edge.setAlphaF(0.4f);
  painter->save();
  painter->setPen(edge);
  painter->setBrush(Qt::NoBrush);
  painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
  painter->restore();
}

QString key_and_trigger(QString const& key, QString const& trigger) {
  if (trigger.isEmpty()) return key;
  return (key.isEmpty() ? key : key + key_divider) + trigger + tab_sign;
}

}  // namespace widgets
