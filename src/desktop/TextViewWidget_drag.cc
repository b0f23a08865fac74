#include "desktop/DroppedContent.h"
#include "desktop/QtGraphics.h"
#include "desktop/QtPasteboard.h"
#include "desktop/TextViewWidget.h"
#include "platform/desktop.h"

#include <QDrag>
#include <QDropEvent>
#include <QPainter>
#include <QPointer>

namespace widgets {
namespace {

namespace operation = platform::drag_operation;

constexpr double picture_opacity = 0.7;

// Ctrl says copy, as everywhere on the desktop.
std::uint32_t offered_operations(QDropEvent const& event) {
  std::uint32_t result = operation::none;
  if (event.possibleActions() & Qt::CopyAction) result |= operation::copy;
  bool const only_copy = (event.modifiers() & Qt::ControlModifier) && result != operation::none;
  if ((event.possibleActions() & Qt::MoveAction) && !only_copy) result |= operation::generic;
  return result;
}

Qt::DropAction action_for(std::uint32_t operation) {
  return operation == operation::generic ? Qt::MoveAction : Qt::CopyAction;
}

}  // namespace

// What covers the shape, with `corner` where its upper left is in the viewport.
QPixmap TextViewWidget::picture_of(std::vector<platform::rect> const& shape, QPointF& corner) {
  platform::rect bounds;
  for (platform::rect const& r : shape) bounds = bounds.united(r);
  corner = {bounds.x - origin().x, bounds.y - origin().y};
  if (bounds.empty()) return {};
  QPixmap picture((QSizeF(bounds.width, bounds.height) * devicePixelRatioF()).toSize());
  if (picture.isNull()) return {};  // less than a pixel
  picture.setDevicePixelRatio(devicePixelRatioF());
  picture.fill(Qt::transparent);
  QPainter painter(&picture);
  painter.setOpacity(picture_opacity);
  QRegion clip;
  for (platform::rect const& r : shape)
    clip += QRectF(r.x - bounds.x, r.y - bounds.y, r.width, r.height).toAlignedRect();
  painter.setClipRegion(clip);
  QtGraphics graphics(painter, *cells_, {bounds.x, bounds.y});
  client_->draw(graphics, bounds);
  return picture;
}

void TextViewWidget::begin_drag(plist::dictionary content, std::vector<platform::rect> const& shape,
                                platform::point at) {
  if (client_ == nullptr) return;
  auto* const drag = new QDrag(viewport());  // Qt's own from here on
  drag->setMimeData(mime_data_of(std::move(content)).release());
  QPointF corner;
  QPixmap const picture = picture_of(shape, corner);
  if (!picture.isNull()) {
    drag->setPixmap(picture);
    drag->setHotSpot(to_viewport(at) - corner.toPoint());
  }
  QPointer<TextViewWidget> const self(this);
  platform::waiting::scope const scope(platform::desktop::current().waits(), &QDrag::cancel);
  drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::CopyAction);
  if (self != nullptr) reset_cursor();
}

platform::drag_info TextViewWidget::translate_drop(
    QDropEvent const& event, platform::pasteboard_content const& content) const {
  return {to_view(event.position()), offered_operations(event),
          translate_modifiers(event.modifiers()), event.source() == viewport(), content};
}

void TextViewWidget::dragEnterEvent(QDragEnterEvent* event) {
  if (event->mimeData() != nullptr && has_known_format(*event->mimeData())) {
    dragMoveEvent(event);
  } else {
    event->ignore();
  }
}

void TextViewWidget::dragMoveEvent(QDragMoveEvent* event) {
  std::uint32_t wanted = operation::none;
  if (client_ != nullptr)
    wanted = client_->dragging_updated(translate_drop(*event, DroppedContent(*event->mimeData())));
  // An event of entering that is ignored would be the last one.
  bool const enters = event->type() == QEvent::DragEnter;
  if (wanted == operation::none && !enters) return event->ignore();
  event->setDropAction(action_for(wanted));
  event->accept();
}

void TextViewWidget::dragLeaveEvent(QDragLeaveEvent*) {
  if (client_ != nullptr) client_->dragging_exited();
}

void TextViewWidget::dropEvent(QDropEvent* event) {
  if (client_ == nullptr) return event->ignore();
  auto const content = std::make_shared<KeptContent>(*event->mimeData());
  platform::drag_info const info = translate_drop(*event, *content);
  bool const wanted = client_->dragging_updated(info) != operation::none;
  client_->dragging_exited();
  if (!wanted) return event->ignore();
  deliver([content, info](platform::view_client& client) { client.perform_drag_operation(info); });
  bool const moved = info.is_from_this_view && (info.operations & operation::generic);
  event->setDropAction(moved ? Qt::MoveAction : Qt::CopyAction);
  event->accept();
  setFocus();
  activateWindow();
}

}  // namespace widgets
