#include "desktop/TickedScrollBar.h"

#include <QPainter>
#include <QStyleOptionSlider>

namespace widgets {

TickedScrollBar::TickedScrollBar(tick_source ticks, QWidget* parent)
    : QScrollBar(Qt::Vertical, parent), ticks_(std::move(ticks)) {}

void TickedScrollBar::paintEvent(QPaintEvent* event) {
  QScrollBar::paintEvent(event);
  QStyleOptionSlider option;
  initStyleOption(&option);
  QRect const groove =
      style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarGroove, this);
  if (groove.height() <= 0) return;
  auto const ticks = ticks_(static_cast<std::size_t>(groove.height()));
  if (ticks.empty()) return;
  bool const is_dark = palette().color(QPalette::Window).lightness() < 128;
  QColor const color = is_dark ? QColor(0xFF, 0xB0, 0x30) : QColor(0xC8, 0x70, 0x00);
  QPainter painter(this);
  int const width = groove.width() / 2;
  for (std::size_t const tick : ticks)
    painter.fillRect(groove.left() + (groove.width() - width) / 2,
                     groove.top() + static_cast<int>(tick), width, 2, color);
}

}  // namespace widgets
