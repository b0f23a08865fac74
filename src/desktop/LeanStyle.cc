#include "desktop/LeanStyle.h"

#include <QPainter>
#include <QStyleOptionMenuItem>

namespace widgets {

void LeanStyle::drawControl(ControlElement element, QStyleOption const* option, QPainter* painter,
                            QWidget const* widget) const {
  auto const* const item = qstyleoption_cast<QStyleOptionMenuItem const*>(option);
  if (element != CE_MenuItem || item == nullptr || !item->text.endsWith(tab_sign))
    return QProxyStyle::drawControl(element, option, painter, widget);
  QStyleOptionMenuItem without = *item;
  qsizetype const tab = item->text.indexOf(QLatin1Char('\t'));
  QString const trigger = item->text.mid(tab + 1);
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
  painter->restore();
}

}  // namespace widgets
