#include "desktop/DroppedContent.h"
#include "desktop/QtPasteboard.h"
#include "desktop/QtText.h"
#include "desktop/TreeWidget.h"
#include "platform/desktop.h"

#include <QApplication>
#include <QDrag>
#include <QDropEvent>
#include <QPainter>
#include <QPointer>

namespace widgets {
namespace {

namespace operation = platform::drag_operation;
using platform::drop_place;

constexpr int hover_time = 700;  // milliseconds until a drag opens a folder
constexpr int scroll_time = 40;  // milliseconds a step at the edges

}  // namespace

// Programs are offered a move too, as the tree moves by itself; they copy unless the user asks.
void TreeWidget::begin_drag() {
  if (client_ == nullptr) return;
  plist::dictionary content = client_->drag_content();
  auto const found = content.find(platform::pasteboard_type::file_list);
  std::size_t const files = found == content.end() ? 0 : found->second.elements().size();
  auto* const drag = new QDrag(viewport());  // Qt's own from here on
  drag->setMimeData(mime_data_of(std::move(content)).release());
  auto const row = client_->current_row();
  QString const title = files > 1 ? QStringLiteral("%1 items").arg(files)
                        : row     ? qstring(client_->row(*row).title)
                                  : QString();
  QSize const size(fontMetrics().horizontalAdvance(title) + row_height(), row_height());
  QPixmap picture(size * devicePixelRatioF());
  picture.setDevicePixelRatio(devicePixelRatioF());
  picture.fill(palette().color(QPalette::Highlight));
  QPainter painter(&picture);
  painter.setFont(font());
  painter.setPen(palette().color(QPalette::HighlightedText));
  painter.drawText(QRect(QPoint(), size), Qt::AlignCenter, title);
  painter.end();
  drag->setPixmap(picture);
  drag->setHotSpot({-row_height() / 2, 0});
  platform::waiting::scope const scope(platform::desktop::current().waits(), &QDrag::cancel);
  QPointer<TreeWidget> const self(this);
  drag->exec(Qt::CopyAction | Qt::MoveAction | Qt::LinkAction, Qt::CopyAction);
  if (self != nullptr) mark_drop(std::nullopt);
}

// The upper and lower quarter of a row mean the place before and after it.
platform::tree_drop TreeWidget::drop_at(QDropEvent const& event,
                                        platform::pasteboard_content const& content) {
  QPoint const p = event.position().toPoint();
  auto const row = row_at(p);
  platform::tree_drop drop{.row = row.value_or(count_),
                           .place = drop_place::end,
                           .operations = operation::copy,
                           .is_from_this_view = event.source() == viewport(),
                           .wants_copy = bool(event.modifiers() & Qt::ControlModifier),
                           .content = content};
  if (!row) return drop;
  QRect const area = rect_of(*row);
  int const quarter = area.height() / 4;
  drop.place = p.y() < area.top() + quarter      ? drop_place::above
               : p.y() > area.bottom() - quarter ? drop_place::below
                                                 : drop_place::on;
  return drop;
}

void TreeWidget::mark_drop(std::optional<platform::drop_answer> answer) {
  drop_ = std::move(answer);
  if (!drop_) {
    hovered_.reset();
    hover_timer_.stop();
    scroll_timer_.stop();
  }
  viewport()->update();
}

void TreeWidget::dragMoveEvent(QDragMoveEvent* event) {
  if (client_ == nullptr || event->mimeData() == nullptr) return event->ignore();
  QPoint const p = event->position().toPoint();
  int const edge = row_height();
  scroll_step_ = p.y() < edge ? -edge / 2 : p.y() > viewport()->height() - edge ? edge / 2 : 0;
  if (scroll_step_ == 0)
    scroll_timer_.stop();
  else if (!scroll_timer_.isActive())
    scroll_timer_.start(scroll_time, this);
  auto const row = row_at(p);
  if (row != hovered_) {
    hovered_ = row;
    hover_timer_.start(hover_time, this);
  }
  auto const answer =
      client_->dragging_updated(drop_at(*event, DroppedContent(*event->mimeData())));
  bool const is_wanted = answer.operation != operation::none;
  mark_drop(is_wanted ? std::optional(answer) : std::nullopt);
  // An event of entering that is ignored would be the last one.
  if (!is_wanted && event->type() != QEvent::DragEnter) return event->ignore();
  event->setDropAction(answer.operation == operation::generic ? Qt::MoveAction : Qt::CopyAction);
  event->accept();
}

void TreeWidget::timerEvent(QTimerEvent* event) {
  if (event->timerId() == rows_timer_.timerId()) return take_rows();
  if (event->timerId() == scroll_timer_.timerId())
    return verticalScrollBar()->setValue(verticalScrollBar()->value() + scroll_step_);
  if (event->timerId() != hover_timer_.timerId()) return QAbstractScrollArea::timerEvent(event);
  hover_timer_.stop();
  if (client_ == nullptr || !hovered_ || *hovered_ >= client_->count()) return;
  platform::tree_row const row = client_->row(*hovered_);
  if (row.can_open && !row.is_open) client_->toggle(*hovered_, false);
}

void TreeWidget::dragLeaveEvent(QDragLeaveEvent*) {
  mark_drop(std::nullopt);
}

void TreeWidget::dropEvent(QDropEvent* event) {
  if (client_ == nullptr) return event->ignore();
  auto const content = std::make_shared<KeptContent>(*event->mimeData());
  platform::tree_drop const drop = drop_at(*event, *content);
  auto const answer = client_->dragging_updated(drop);
  mark_drop(std::nullopt);
  if (answer.operation == operation::none) return event->ignore();
  // Its source has nothing left to do, whatever the tree does.
  event->setDropAction(Qt::CopyAction);
  event->accept();
  deliver([content, drop](platform::tree_client& client) { client.perform_drop(drop); });
}

}  // namespace widgets
