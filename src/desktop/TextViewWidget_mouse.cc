#include "desktop/QtText.h"
#include "desktop/TextViewWidget.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QScrollBar>
#include <QStyleHints>
#include <QToolTip>

#include <cmath>
#include <cstdlib>
#include <utility>

namespace widgets {
namespace {

constexpr int units_per_step = 120;  // of a wheel's angle: eighths of a degree

platform::mouse_button translate_button(Qt::MouseButton button) {
  switch (button) {
    case Qt::MiddleButton:
      return platform::mouse_button::middle;
    case Qt::RightButton:
      return platform::mouse_button::right;
    default:
      return platform::mouse_button::left;
  }
}

bool is_editing_button(Qt::MouseButton button) {
  return button == Qt::LeftButton || button == Qt::MiddleButton || button == Qt::RightButton;
}

}  // namespace

// Qt itself tells no more than double clicks.
void TextViewWidget::count_click(QMouseEvent const& event) {
  QStyleHints const& hints = *QGuiApplication::styleHints();
  bool const soon =
      since_press_.isValid() && since_press_.elapsed() <= hints.mouseDoubleClickInterval();
  QPointF const moved = event.position() - press_at_;
  bool const near = moved.manhattanLength() <= hints.mouseDoubleClickDistance();
  bool const repeated = soon && near && press_button_ == event.button();
  click_count_ = repeated ? click_count_ + 1 : 1;
  press_at_ = event.position();
  press_button_ = event.button();
  since_press_.start();
}

platform::mouse_event TextViewWidget::translate_mouse(QMouseEvent const& event) const {
  platform::mouse_event out;
  out.position = to_view(event.position());
  out.button = translate_button(press_button_);
  out.click_count = click_count_;
  out.modifiers = translate_modifiers(event.modifiers());
  return out;
}

void TextViewWidget::mousePressEvent(QMouseEvent* event) {
  if (!is_editing_button(event->button())) return;
  count_click(*event);
  deliver([mouse = translate_mouse(*event)](platform::view_client& client) {
    client.mouse_down(mouse);
  });
}

void TextViewWidget::mouseMoveEvent(QMouseEvent* event) {
  if (client_ == nullptr) return;
  cursor_hidden_ = false;
  show_cursor(
      client_->cursor_at(to_view(event->position()), translate_modifiers(event->modifiers())));
  if (event->buttons() & press_button_)
    deliver([mouse = translate_mouse(*event)](platform::view_client& client) {
      client.mouse_dragged(mouse);
    });
}

void TextViewWidget::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != press_button_) return;
  deliver(
      [mouse = translate_mouse(*event)](platform::view_client& client) { client.mouse_up(mouse); });
}

bool TextViewWidget::viewportEvent(QEvent* event) {
  if (event->type() != QEvent::ToolTip) return QAbstractScrollArea::viewportEvent(event);
  show_tool_tip(*static_cast<QHelpEvent*>(event));
  return true;
}

void TextViewWidget::show_tool_tip(QHelpEvent const& event) {
  if (client_ == nullptr) return;
  auto const tip = client_->tool_tip_at(to_view(event.pos()));
  shows_tool_tip_ = tip.has_value();
  if (!tip) return QToolTip::hideText();
  QString const text = tool_tip_text(*tip);
  QPoint const corner = to_viewport({tip->area.x, tip->area.y});
  QSize const size = QSizeF(tip->area.width, tip->area.height).toSize();
  QToolTip::showText(event.globalPos(), text, viewport(), QRect(corner, size));
}

QString TextViewWidget::tool_tip_text(platform::tool_tip const& tip) const {
  return QStringLiteral("<pre style=\"font-family:'%1'\">%2</pre>")
      .arg(qstring(cells_->font().family).toHtmlEscaped(), qstring(tip.text).toHtmlEscaped());
}

// It goes when the mouse leaves the stretch round where it is now: that is some way off.
void TextViewWidget::show_tool_tip(platform::tool_tip const& tip) {
  constexpr int way = 40;                // pixels
  constexpr int shown = 60 * 60 * 1000;  // milliseconds: until it is closed
  QPoint const below = to_viewport({tip.area.x, tip.area.bottom()});
  QPoint const mouse = viewport()->mapFromGlobal(QCursor::pos());
  bool const is_in_sight = viewport()->rect().contains(to_viewport({tip.area.x, tip.area.y}));
  QPoint const at = is_in_sight ? below : mouse;
  shows_tool_tip_ = true;
  QRect const stretch(mouse - QPoint(way, way), QSize(2 * way, 2 * way));
  QToolTip::showText(viewport()->mapToGlobal(at), tool_tip_text(tip), viewport(), stretch, shown);
}

bool TextViewWidget::hide_tool_tip() {
  bool const shown = std::exchange(shows_tool_tip_, false) && QToolTip::isVisible();
  if (shown) QToolTip::hideText();
  return shown;
}

// Opened by the press of the right button, which the logic gets.
void TextViewWidget::contextMenuEvent(QContextMenuEvent* event) {
  event->accept();
}

void TextViewWidget::zoom(int angle) {
  zoom_rest_ += angle;
  int const steps = zoom_rest_ / units_per_step;
  zoom_rest_ -= steps * units_per_step;
  for (int i = 0; i < std::abs(steps) && owner_ != nullptr; ++i)
    owner_->change_text_size(steps > 0);
}

QPointF TextViewWidget::wheel_distance(QWheelEvent const& event) const {
  // X11 gives device units for pixels.
  bool const has_pixels = QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
  if (has_pixels && !event.pixelDelta().isNull()) return event.pixelDelta();
  double const steps = QGuiApplication::styleHints()->wheelScrollLines() / double(units_per_step);
  return {event.angleDelta().x() * steps * horizontalScrollBar()->singleStep(),
          event.angleDelta().y() * steps * verticalScrollBar()->singleStep()};
}

void TextViewWidget::wheelEvent(QWheelEvent* event) {
  event->accept();
  if (event->modifiers() & Qt::ControlModifier) return zoom(event->angleDelta().y());
  QPointF distance = wheel_distance(*event);
  bool const sideways = event->modifiers() & (Qt::ShiftModifier | Qt::AltModifier);
  if (sideways && distance.x() == 0) distance = {distance.y(), 0};
  wheel_rest_ += distance;
  QPointF const whole(std::trunc(wheel_rest_.x()), std::trunc(wheel_rest_.y()));
  wheel_rest_ -= whole;
  QPoint const angle = event->angleDelta();
  bool const is_stepped = event->phase() == Qt::NoScrollPhase && angle.x() % units_per_step == 0 &&
                          angle.y() % units_per_step == 0;
  if (is_stepped && client_ != nullptr && client_->scrolls_smoothly())
    return glide_by({-whole.x(), -whole.y()});
  scroll_to({origin().x - whole.x(), origin().y - whole.y()});
}

}  // namespace widgets
