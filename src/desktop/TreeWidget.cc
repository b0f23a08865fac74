#include "desktop/TreeWidget.h"

#include "desktop/QtPasteboard.h"
#include "desktop/QtText.h"
#include "desktop/TreeIcons.h"
#include "platform/desktop.h"

#include <QApplication>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>
#include <limits>

namespace widgets {
namespace {

constexpr int margin = 4;  // pixels

QColor faded(QColor color, float opacity) {
  color.setAlphaF(color.alphaF() * opacity);
  return color;
}

}  // namespace

TreeWidget::TreeWidget(platform::tree_client& client, TextViewOwner& owner, QWidget* parent)
    : QAbstractScrollArea(parent), client_(&client), owner_(&owner) {
  setFrameShape(QFrame::NoFrame);
  setFocusPolicy(Qt::ClickFocus);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  viewport()->setAcceptDrops(true);
  viewport()->setBackgroundRole(QPalette::Base);
  setAccessibleName(QStringLiteral("Files"));
  client_->set_host(this);
  rows_changed();
}

void TreeWidget::detach() {
  if (client_ != nullptr) client_->set_host(nullptr);
  client_goes();
  owner_ = nullptr;
}

void TreeWidget::client_goes() {
  client_ = nullptr;
  end_editing();
}

void TreeWidget::deliver(std::function<void(platform::tree_client&)> input) {
  platform::desktop::current().waits().deliver_input(lives_, [this, input = std::move(input)] {
    if (client_ != nullptr) input(*client_);
  });
}

// Rows.

int TreeWidget::row_height() const {
  return fontMetrics().height() + 2 * (margin - 1);
}

// Changes come in bursts; what they make of the rows is looked at once.
void TreeWidget::rows_changed() {
  if (!rows_timer_.isActive()) rows_timer_.start(0, this);
}

void TreeWidget::take_rows() {
  rows_timer_.stop();
  if (client_ == nullptr) return;
  count_ = client_->count();
  std::int64_t const height = std::int64_t(count_) * row_height() + margin;
  auto const all = int(std::min<std::int64_t>(height, std::numeric_limits<int>::max()));
  verticalScrollBar()->setPageStep(viewport()->height());
  verticalScrollBar()->setSingleStep(row_height());
  verticalScrollBar()->setRange(0, std::max(0, all - viewport()->height()));
  if (editor_ != nullptr) {
    if (auto const row = client_->edited_row()) {
      edited_row_ = *row;
      place_editor();
    } else {
      end_editing();
    }
  }
  viewport()->update();
}

QRect TreeWidget::rect_of(std::size_t row) const {
  auto const y = std::int64_t(row) * row_height() - verticalScrollBar()->value();
  auto const most = std::int64_t{1} << 24;  // out of sight
  return {0, int(std::clamp(y, -most, most)), viewport()->width(), row_height()};
}

std::optional<std::size_t> TreeWidget::row_at(QPoint p) {
  if (rows_timer_.isActive()) take_rows();
  int const y = p.y() + verticalScrollBar()->value();
  auto const row = static_cast<std::size_t>(std::max(0, y / row_height()));
  return y >= 0 && row < count_ ? std::optional(row) : std::nullopt;
}

void TreeWidget::show_row(std::size_t row) {
  take_rows();
  QRect const area = rect_of(row);
  int const value = verticalScrollBar()->value();
  if (area.top() < 0)
    verticalScrollBar()->setValue(value + area.top());
  else if (area.bottom() >= viewport()->height())
    verticalScrollBar()->setValue(value + area.bottom() + 1 - viewport()->height());
}

std::size_t TreeWidget::page_size() const {
  return static_cast<std::size_t>(std::max(1, viewport()->height() / row_height()));
}

bool TreeWidget::has_focus() const {
  return hasFocus() || (editor_ != nullptr && editor_->hasFocus());
}

// Painting.

int TreeWidget::title_x(std::size_t depth) const {
  int const step = indent(), side = row_height();
  return margin + int(std::min<std::size_t>(depth, 1000)) * step + step + side;
}

void TreeWidget::paintEvent(QPaintEvent* event) {
  if (client_ == nullptr) return;
  if (rows_timer_.isActive()) take_rows();
  QPainter painter(viewport());
  QRect const dirty = event->rect();
  auto const first = row_at({0, std::max(0, dirty.top())});
  for (std::size_t row = first.value_or(count_); row < count_; ++row) {
    QRect const area = rect_of(row);
    if (area.top() > dirty.bottom()) break;
    paint_row(painter, area, client_->row(row));
  }
  paint_drop(painter);
}

void TreeWidget::paint_row(QPainter& painter, QRect const& area,
                           platform::tree_row const& row) const {
  bool const is_active = has_focus() && isActiveWindow();
  QPalette const& colors = palette();
  QColor text = colors.color(QPalette::Text);
  QColor const highlight = colors.color(QPalette::Active, QPalette::Highlight);
  if (row.is_selected) {
    painter.fillRect(area, is_active ? highlight : faded(highlight, 0.3f));
    if (is_active) text = colors.color(QPalette::Active, QPalette::HighlightedText);
  } else if (row.is_shown) {
    painter.fillRect(area, faded(highlight, 0.15f));
  }
  if (row.is_shown) painter.fillRect(QRect(0, area.y(), 3, area.height()), highlight);
  if (row.is_current && is_active && !row.is_selected) {
    painter.setPen(highlight);
    painter.drawRect(area.adjusted(0, 0, -1, -1));
  }
  int const x = title_x(row.depth), side = row_height();
  QRectF const arrow(x - side - indent(), area.y() + (side - indent()) / 2.0, indent(), indent());
  if (row.can_open) draw_tree_arrow(painter, arrow, row.is_open, faded(text, 0.75f));
  double const inset = side * 0.14;
  draw_tree_icon(painter,
                 QRectF(x - side, area.y(), side, side).adjusted(inset, inset, -inset, -inset), row,
                 text, !(row.is_selected && is_active));

  int right = area.right() - margin;
  if (row.is_edited) {
    int const dot = side / 3;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(text);
    painter.drawEllipse(right - dot, area.center().y() - dot / 2, dot, dot);
    painter.setRenderHint(QPainter::Antialiasing, false);
    right -= dot + margin;
  }
  QFont font = this->font();
  font.setBold(row.has_tab);
  font.setStrikeOut(row.is_missing);
  QFontMetrics const metrics(font);
  QRect place(x + margin, area.y(), std::max(0, right - x - margin), area.height());
  QString const title = metrics.elidedText(qstring(row.title), Qt::ElideMiddle, place.width());
  painter.setFont(font);
  painter.setPen(row.is_missing || row.is_pale ? faded(text, 0.6f) : text);
  painter.drawText(place, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine, title);
  if (row.detail.empty()) return;
  place.setLeft(place.left() + metrics.horizontalAdvance(title) + 2 * margin);
  if (place.width() < 3 * side) return;
  painter.setFont(this->font());
  painter.setPen(faded(text, 0.6f));
  painter.drawText(place, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine,
                   fontMetrics().elidedText(qstring(row.detail), Qt::ElideRight, place.width()));
}

void TreeWidget::paint_drop(QPainter& painter) const {
  if (!drop_) return;
  QColor const color = palette().color(QPalette::Active, QPalette::Highlight);
  bool const is_end = drop_->place == platform::drop_place::end;
  QRect const area = rect_of(is_end ? count_ : drop_->row);
  if (drop_->place == platform::drop_place::on) {
    painter.setPen(QPen(color, 2));
    painter.drawRect(area.adjusted(1, 1, -1, -1));
  } else {
    bool const is_below = drop_->place == platform::drop_place::below;
    painter.fillRect(QRect(0, (is_below ? area.bottom() : area.top()) - 1, area.width(), 2), color);
  }
}

void TreeWidget::resizeEvent(QResizeEvent* event) {
  QAbstractScrollArea::resizeEvent(event);
  take_rows();
  place_editor();
}

void TreeWidget::scrollContentsBy(int, int) {
  place_editor();
  viewport()->update();
}

void TreeWidget::changeEvent(QEvent* event) {
  QAbstractScrollArea::changeEvent(event);
  if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) take_rows();
  if (event->type() == QEvent::ActivationChange) viewport()->update();
}

void TreeWidget::focusInEvent(QFocusEvent*) {
  if (client_ != nullptr) client_->focus_changed();
}

void TreeWidget::focusOutEvent(QFocusEvent*) {
  if (client_ != nullptr) client_->focus_changed();
}

bool TreeWidget::viewportEvent(QEvent* event) {
  if (event->type() != QEvent::ToolTip || client_ == nullptr)
    return QAbstractScrollArea::viewportEvent(event);
  auto const* const help = static_cast<QHelpEvent*>(event);
  auto const row = row_at(help->pos());
  QString const tip = row ? qstring(client_->row(*row).tip) : QString();
  QToolTip::showText(help->globalPos(), tip, viewport(), row ? rect_of(*row) : QRect());
  return true;
}

// Keys.

void TreeWidget::keyPressEvent(QKeyEvent* event) {
  // In the text these are key bindings.
  if (event->key() == Qt::Key_F10 && event->modifiers() == Qt::ShiftModifier) {
    QContextMenuEvent menu(QContextMenuEvent::Keyboard, {}, {}, event->modifiers());
    return contextMenuEvent(&menu);
  }
  if (event->key() == Qt::Key_F10 && event->modifiers() == Qt::NoModifier)
    return deliver([this](platform::tree_client&) { owner_->open_first_menu(); });
  platform::key_event const key = keys_.translate(*event);
  if (key.characters.empty()) return;
  deliver([this, key](platform::tree_client& client) {
    if (owner_->should_swallow(key) || client.key_down(key)) return;
    if (owner_ == nullptr || owner_->perform_key_equivalent(key)) return;
    if (key.modifiers == platform::modifier::option)
      owner_->open_menu_with_letter(qstring(key.characters_ignoring_modifiers));
  });
}

// The mouse.

bool TreeWidget::is_on_arrow(platform::tree_row const& row, QPoint p) const {
  int const end = title_x(row.depth) - row_height();
  return row.can_open && end - indent() <= p.x() && p.x() < end;
}

void TreeWidget::mousePressEvent(QMouseEvent* event) {
  pressed_.reset();
  QPoint const p = event->position().toPoint();
  auto const row = row_at(p);
  if (event->button() != Qt::LeftButton || client_ == nullptr) return;
  if (!row) return deliver([](platform::tree_client& client) { client.mouse_down_outside(); });
  auto const modifiers = translate_modifiers(event->modifiers());
  if (is_on_arrow(client_->row(*row), p))
    return deliver([row = *row, all = bool(modifiers & platform::modifier::option)](
                       platform::tree_client& client) { client.toggle(row, all); });
  pressed_ = row;
  pressed_at_ = p;
  deliver([row = *row, modifiers](platform::tree_client& client) {
    client.mouse_down(row, modifiers);
  });
}

void TreeWidget::mouseReleaseEvent(QMouseEvent* event) {
  auto const row = std::exchange(pressed_, std::nullopt);
  if (!row || event->button() != Qt::LeftButton) return;
  if (row_at(event->position().toPoint()) != row) return;
  deliver([row = *row, modifiers = translate_modifiers(event->modifiers())](
              platform::tree_client& client) { client.mouse_up(row, modifiers); });
}

// The release after it means nothing more.
void TreeWidget::mouseDoubleClickEvent(QMouseEvent* event) {
  QPoint const p = event->position().toPoint();
  auto const row = row_at(p);
  if (event->button() != Qt::LeftButton || !row || client_ == nullptr) return;
  if (is_on_arrow(client_->row(*row), p)) return mousePressEvent(event);
  pressed_.reset();
  deliver([row = *row](platform::tree_client& client) { client.double_click(row); });
}

void TreeWidget::mouseMoveEvent(QMouseEvent* event) {
  bool const is_far = (event->position().toPoint() - pressed_at_).manhattanLength() >=
                      QApplication::startDragDistance();
  if (!pressed_ || !(event->buttons() & Qt::LeftButton) || !is_far) return;
  pressed_.reset();
  begin_drag();
}

void TreeWidget::contextMenuEvent(QContextMenuEvent* event) {
  setFocus(Qt::OtherFocusReason);
  bool const is_by_key = event->reason() == QContextMenuEvent::Keyboard;
  QPoint const p = event->pos(), global = event->globalPos();
  deliver([this, is_by_key, p, global](platform::tree_client& client) {
    auto const row = is_by_key ? client.current_row() : row_at(p);
    if (is_by_key && row) show_row(*row);
    auto const items = client.context_menu(row);
    QPoint const below(title_x(0), row ? rect_of(*row).bottom() : 0);
    owner_->pop_up_menu(items, is_by_key ? viewport()->mapToGlobal(below) : global);
  });
}

// Titles that are edited.

void TreeWidget::edit_title(std::size_t row, std::string const& title, std::size_t selected) {
  end_editing();
  edited_row_ = row;
  editor_ = new TitleEditor(viewport());
  editor_->setText(qstring(title));
  editor_->setSelection(0, int(selected));
  editor_->fault = [this](QString const& text) {
    return client_ == nullptr ? QString() : qstring(client_->fault_of_title(utf8(text)));
  };
  editor_->done = [this](std::optional<QString> const& text) {
    bool const had_focus = editor_->hasFocus();
    end_editing();
    if (had_focus) setFocus(Qt::OtherFocusReason);
    deliver([text](platform::tree_client& client) {
      if (text)
        client.title_edited(utf8(*text));
      else
        client.title_dropped();
    });
  };
  place_editor();
  editor_->show();
  editor_->setFocus(Qt::OtherFocusReason);
}

void TreeWidget::place_editor() {
  if (editor_ == nullptr || client_ == nullptr || edited_row_ >= client_->count()) return;
  int const x = title_x(client_->row(edited_row_).depth);
  QRect area = rect_of(edited_row_);
  area.setLeft(x);
  area.setRight(std::max(area.right() - 1, x + 4 * row_height()));
  editor_->setGeometry(area);
}

void TreeWidget::end_editing() {
  if (editor_ == nullptr) return;
  TitleEditor* const ended = std::exchange(editor_, nullptr);
  ended->done = nullptr;
  ended->hide();
  ended->deleteLater();
}

void TitleEditor::end(std::optional<QString> title) {
  if (auto const call = std::exchange(done, nullptr)) call(std::move(title));
}

// Keys that mean nothing here are for nobody else.
void TitleEditor::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape) return end(std::nullopt);
  if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
    QString const why = fault ? fault(text()) : QString();
    if (why.isEmpty()) return end(text());
    return QToolTip::showText(mapToGlobal(QPoint(0, height())), why, this);
  }
  QLineEdit::keyPressEvent(event);
  event->accept();
  QString const why = fault && !text().isEmpty() ? fault(text()) : QString();
  QToolTip::showText(mapToGlobal(QPoint(0, height())), why, this);
}

void TitleEditor::focusOutEvent(QFocusEvent* event) {
  QLineEdit::focusOutEvent(event);
  bool const comes_back =
      event->reason() == Qt::ActiveWindowFocusReason || event->reason() == Qt::PopupFocusReason;
  if (!comes_back) end(std::nullopt);
}

}  // namespace widgets
