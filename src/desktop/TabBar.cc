#include "desktop/TabBar.h"

#include "desktop/QtText.h"
#include "platform/desktop.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDrag>
#include <QHelpEvent>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QTimer>
#include <QToolTip>
#include <QWheelEvent>

#include <algorithm>

namespace widgets {
namespace {

constexpr int least_letters = 8, most_letters = 30;  // that a tab has room for
constexpr int pad = 8;                               // pixels, as all that follow
constexpr int wheel_step = 60;
constexpr int menu_letters = 80;

QString const tab_type = QStringLiteral("application/x-quirnote-tab");

// The tab that a drag of this process carries.
std::optional<platform::tab_id> dragged_tab(QDropEvent const& event) {
  if (event.source() == nullptr || event.mimeData() == nullptr) return std::nullopt;
  bool is_number = false;
  auto const id = event.mimeData()->data(tab_type).toUInt(&is_number);
  return is_number ? std::optional<platform::tab_id>(id) : std::nullopt;
}

/// Notices that a drag is cancelled, which Qt doesn't report: its result is that of a drop where
/// nobody wants it.
class EscapeWatch final : public QObject {
 public:
  EscapeWatch() {
    // Later than the drag's own filter, so that it comes before it.
    QTimer::singleShot(0, this, [this] { qApp->installEventFilter(this); });
  }
  bool was_pressed = false;

 protected:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride)
      was_pressed |= static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape;
    return false;
  }
};

QColor mixed(QColor const& a, QColor const& b, double part_of_b) {
  auto const mix = [&](int x, int y) { return static_cast<int>(x + (y - x) * part_of_b); };
  return {mix(a.red(), b.red()), mix(a.green(), b.green()), mix(a.blue(), b.blue())};
}

}  // namespace

TabBar::TabBar(platform::tab_bar_delegate& delegate, menu_opener open_menu, QWidget* parent)
    : QWidget(parent), delegate_(&delegate), open_menu_(std::move(open_menu)) {
  setMouseTracking(true);
  setAcceptDrops(true);
  setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  setAttribute(Qt::WA_OpaquePaintEvent);
  setAccessibleName(QStringLiteral("Tabs"));
}

QSize TabBar::sizeHint() const {
  return {0, fontMetrics().height() + 2 * pad};
}

void TabBar::deliver(std::function<void(platform::tab_bar_delegate&)> input) {
  platform::desktop::current().waits().deliver(lives_, [this, input = std::move(input)] {
    if (delegate_ != nullptr) input(*delegate_);
  });
}

void TabBar::set_tabs(std::vector<platform::shown_tab> tabs, platform::tab_id selected) {
  tabs_ = std::move(tabs);
  dragged_.reset();
  hovered_ = pressed_ = {};
  is_laid_out_ = false;
  selected_ = selected;
  shall_reveal_ = true;
  update();
}

void TabBar::update_tab(platform::shown_tab const& tab) {
  auto const index = index_of(tab.id);
  if (!index) return;
  if (tabs_[*index].title != tab.title) {
    is_laid_out_ = false;
    update();
  } else if (is_laid_out_) {
    update(tab_rect(*index));
  }
  tabs_[*index] = tab;
}

void TabBar::select_tab(platform::tab_id tab) {
  if (selected_ == tab) return;
  selected_ = tab;
  shall_reveal_ = true;
  update();
}

// Layout.

std::optional<std::size_t> TabBar::index_of(platform::tab_id tab) const {
  auto const found =
      std::find_if(tabs_.begin(), tabs_.end(), [&](auto const& each) { return each.id == tab; });
  if (found == tabs_.end()) return std::nullopt;
  return static_cast<std::size_t>(found - tabs_.begin());
}

void TabBar::lay_out() {
  if (!is_laid_out_) {
    is_laid_out_ = true;
    QFontMetrics const metrics = fontMetrics();
    int const letter = metrics.averageCharWidth(), button = metrics.height();
    ends_.clear();
    int end = 0;
    for (platform::shown_tab const& tab : tabs_) {
      int const text = metrics.horizontalAdvance(qstring(tab.title)) + 1;
      end += std::clamp(text, least_letters * letter, most_letters * letter) + 3 * pad + button;
      ends_.push_back(end);
    }
  }
  if (auto const index = index_of(selected_); shall_reveal_ && index) reveal(*index);
  shall_reveal_ = false;
  scroll_by(0);
}

// For the tabs, beside the buttons.
int TabBar::room() const {
  int const all = ends_.empty() ? 0 : ends_.back();
  return all <= width() ? width() : std::max(0, width() - 3 * height() * 3 / 4);
}

void TabBar::scroll_by(int distance) {
  int const all = ends_.empty() ? 0 : ends_.back();
  int const next = std::clamp(offset_ + distance, 0, std::max(0, all - room()));
  if (next != offset_) update();
  offset_ = next;
}

void TabBar::reveal(std::size_t index) {
  int const begin = index == 0 ? 0 : ends_[index - 1];
  if (ends_[index] > offset_ + room()) offset_ = ends_[index] - room();
  offset_ = std::min(offset_, begin);
}

QRect TabBar::tab_rect(std::size_t index) const {
  int const begin = index == 0 ? 0 : ends_[index - 1];
  return {begin - offset_, 0, ends_[index] - begin, height()};
}

QRect TabBar::close_rect(std::size_t index) const {
  int const side = fontMetrics().height();
  QRect const tab = tab_rect(index);
  return {tab.right() - pad / 2 - side, (height() - side) / 2, side, side};
}

QRect TabBar::button_rect(part button) const {
  int const side = height() * 3 / 4;
  int const place = button == part::list ? 1 : button == part::scroll_right ? 2 : 3;
  return {width() - place * side, 0, side, height()};
}

TabBar::spot TabBar::spot_at(QPoint at) const {
  if (!rect().contains(at) || !is_laid_out_) return {};
  if (at.x() >= room()) {
    for (part const button : {part::scroll_left, part::scroll_right, part::list})
      if (button_rect(button).contains(at)) return {button, 0};
    return {};
  }
  auto const found = std::upper_bound(ends_.begin(), ends_.end(), at.x() + offset_);
  if (found == ends_.end()) return {};
  auto const index = static_cast<std::size_t>(found - ends_.begin());
  return {close_rect(index).contains(at) ? part::close_button : part::tab, index};
}

// The index that a tab dropped there would have.
std::size_t TabBar::gap_at(int x) const {
  std::size_t gap = 0;
  while (gap < tabs_.size() && x > tab_rect(gap).center().x()) ++gap;
  return gap;
}

// Drawing.

void TabBar::paintEvent(QPaintEvent* event) {
  lay_out();
  QPainter painter(this);
  QColor const ground = mixed(palette().color(QPalette::Window), Qt::black, 0.08);
  painter.fillRect(event->rect(), ground);
  painter.setClipRect(QRect(0, 0, room(), height()) & event->rect());
  for (auto n = static_cast<std::size_t>(std::upper_bound(ends_.begin(), ends_.end(), offset_) -
                                         ends_.begin());
       n < tabs_.size() && tab_rect(n).left() < room(); ++n)
    draw_tab(painter, n);
  if (drop_gap_) {
    int const x = *drop_gap_ == 0 ? -offset_ : ends_[*drop_gap_ - 1] - offset_;
    painter.fillRect(QRect(x - 1, 0, 3, height()), palette().color(QPalette::Highlight));
  }
  painter.setClipping(false);
  painter.fillRect(QRect(0, height() - 1, width(), 1),
                   mixed(ground, palette().color(QPalette::WindowText), 0.2));
  if (room() < width())
    for (part const button : {part::scroll_left, part::scroll_right, part::list})
      draw_button(painter, button);
}

void TabBar::draw_tab(QPainter& painter, std::size_t index) const {
  platform::shown_tab const& tab = tabs_[index];
  QRect const area = tab_rect(index);
  bool const is_selected = tab.id == selected_;
  bool const is_hovered = hovered_.index == index &&
                          (hovered_.what == part::tab || hovered_.what == part::close_button);
  QColor const text = palette().color(QPalette::WindowText);
  QColor const window = palette().color(QPalette::Window);
  if (is_selected || is_hovered)
    painter.fillRect(area, is_selected ? palette().color(QPalette::Base) : window);
  if (is_selected)
    painter.fillRect(QRect(area.left(), 0, area.width(), 2), palette().color(QPalette::Highlight));
  painter.setPen(mixed(window, text, 0.25));
  painter.drawLine(area.right(), 4, area.right(), height() - 5);

  QRect const button = close_rect(index);
  QRect const room(area.left() + pad, 0, button.left() - area.left() - pad - pad / 2, height());
  painter.setPen(is_selected ? palette().color(QPalette::Text) : mixed(window, text, 0.75));
  painter.drawText(room, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine,
                   fontMetrics().elidedText(qstring(tab.title), Qt::ElideMiddle, room.width()));

  painter.setRenderHint(QPainter::Antialiasing);
  bool const on_button = hovered_ == spot{part::close_button, index};
  if (on_button) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(mixed(window, text, 0.2));
    painter.drawEllipse(button);
  }
  QPointF const middle = QRectF(button).center();
  if (tab.is_edited && !on_button) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(text);
    painter.drawEllipse(middle, 3.5, 3.5);
  } else if (is_selected || is_hovered) {
    double const arm = button.width() * 0.2;
    painter.setPen(QPen(text, 1.4));
    painter.drawLine(middle - QPointF(arm, arm), middle + QPointF(arm, arm));
    painter.drawLine(middle - QPointF(arm, -arm), middle + QPointF(arm, -arm));
  }
  painter.setRenderHint(QPainter::Antialiasing, false);
}

void TabBar::draw_button(QPainter& painter, part button) const {
  QRect const area = button_rect(button);
  QColor const text = palette().color(QPalette::WindowText);
  QColor const window = palette().color(QPalette::Window);
  if (hovered_.what == button) painter.fillRect(area.adjusted(1, 3, -1, -4), window);
  bool const is_at_end =
      (button == part::scroll_left && offset_ == 0) ||
      (button == part::scroll_right && !ends_.empty() && offset_ + room() >= ends_.back());
  painter.setPen(QPen(mixed(window, text, is_at_end ? 0.3 : 0.85), 1.6));
  painter.setRenderHint(QPainter::Antialiasing);
  QPointF const middle = QRectF(area).center();
  double const arm = area.width() * 0.18;
  QPointF along(arm, 0), across(0, arm);
  if (button == part::scroll_left) along = -along;
  if (button == part::list) std::swap(along, across);
  QPolygonF const arrow{
      {middle - along / 2 - across, middle + along / 2, middle - along / 2 + across}};
  painter.setBrush(Qt::NoBrush);
  painter.drawPolyline(arrow);
  painter.setRenderHint(QPainter::Antialiasing, false);
}

// The mouse.

void TabBar::hover(spot at) {
  if (at == hovered_) return;
  hovered_ = at;
  update();
}

bool TabBar::eventFilter(QObject*, QEvent* event) {
  bool const is_release = event->type() == QEvent::KeyRelease;
  if (is_release && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Control)
    deliver([id = selected_](auto& delegate) { delegate.tabWasSelected(id); });
  return false;
}

bool TabBar::event(QEvent* event) {
  if (event->type() != QEvent::ToolTip) return QWidget::event(event);
  auto const& help = static_cast<QHelpEvent const&>(*event);
  spot const at = spot_at(help.pos());
  QString text;
  if (at.what == part::tab || at.what == part::close_button)
    text = qstring(tabs_[at.index].tool_tip);
  if (at.what == part::list) text = QStringLiteral("List of all tabs");
  // Names are no mark-up.
  QToolTip::showText(help.globalPos(), text.isEmpty() ? text : text.toHtmlEscaped(), this);
  return true;
}

void TabBar::changeEvent(QEvent* event) {
  if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
    is_laid_out_ = false;
    updateGeometry();
  }
  QWidget::changeEvent(event);
}

void TabBar::resizeEvent(QResizeEvent*) {
  shall_reveal_ = true;
}

void TabBar::leaveEvent(QEvent*) {
  hover({});
}

void TabBar::wheelEvent(QWheelEvent* event) {
  QPoint const angle = event->angleDelta();
  wheel_rest_ += angle.x() != 0 ? angle.x() : angle.y();
  int const steps = wheel_rest_ / 120;
  wheel_rest_ -= steps * 120;
  scroll_by(-steps * wheel_step);
  hover(spot_at(event->position().toPoint()));
  event->accept();
}

void TabBar::mousePressEvent(QMouseEvent* event) {
  lay_out();
  QPoint const at = event->position().toPoint();
  spot const found = spot_at(at);
  hover(found);
  pressed_ = {};
  if (event->button() != Qt::LeftButton && event->button() != Qt::MiddleButton) return;
  pressed_ = found;
  press_at_ = at;
  if (event->button() == Qt::MiddleButton) return;
  switch (found.what) {
    case part::tab:
      deliver([id = tabs_[found.index].id](auto& delegate) { delegate.tabWasSelected(id); });
      break;
    case part::scroll_left:
    case part::scroll_right:
      scroll_by(room() / 2 * (found.what == part::scroll_left ? -1 : 1));
      break;
    case part::list:
      show_list();
      break;
    default:
      break;
  }
}

void TabBar::mouseMoveEvent(QMouseEvent* event) {
  QPoint const at = event->position().toPoint();
  if (!(event->buttons() & Qt::LeftButton) || pressed_.what != part::tab)
    return hover(event->buttons() == Qt::NoButton ? spot_at(at) : hovered_);
  if (pressed_.index >= tabs_.size()) return;
  if (!dragged_) {
    if ((at - press_at_).manhattanLength() < QApplication::startDragDistance()) return;
    dragged_ = pressed_.index;
  }
  if (at.y() < -height() || at.y() > 2 * height()) return drag_out(at);
  move_dragged(at.x());
}

// As far as the mouse is beyond the middle of its neighbours.
void TabBar::move_dragged(int x) {
  if (x < 0 || x > room()) scroll_by(x < 0 ? -pad : pad);
  std::size_t to = *dragged_;
  while (to + 1 < tabs_.size() && x > tab_rect(to + 1).center().x()) ++to;
  while (to > 0 && x < tab_rect(to - 1).center().x()) --to;
  if (to == *dragged_) return;
  auto const at = [this](std::size_t n) { return tabs_.begin() + static_cast<std::ptrdiff_t>(n); };
  if (to > *dragged_)
    std::rotate(at(*dragged_), at(*dragged_ + 1), at(to + 1));
  else
    std::rotate(at(to), at(*dragged_), at(*dragged_ + 1));
  dragged_ = to;
  hovered_ = {part::tab, to};
  is_laid_out_ = false;
  lay_out();
  update();
}

void TabBar::mouseReleaseEvent(QMouseEvent* event) {
  spot const pressed = std::exchange(pressed_, {});
  spot const at = spot_at(event->position().toPoint());
  if (auto const to = std::exchange(dragged_, std::nullopt)) {
    if (*to != pressed.index)
      deliver([id = tabs_[*to].id, to = *to](auto& delegate) { delegate.tabWasMoved(id, to); });
    return;
  }
  bool const is_middle = event->button() == Qt::MiddleButton;
  bool const on_tab = at.what == part::tab || at.what == part::close_button;
  bool const closes = is_middle ? on_tab && at.index == pressed.index
                                : at == pressed && at.what == part::close_button;
  if (closes && at.index < tabs_.size())
    deliver([id = tabs_[at.index].id](auto& delegate) { delegate.tabShouldClose(id); });
}

void TabBar::contextMenuEvent(QContextMenuEvent* event) {
  spot const at = spot_at(event->pos());
  if (delegate_ == nullptr || (at.what != part::tab && at.what != part::close_button)) return;
  open_menu_(delegate_->menuForTab(tabs_[at.index].id), event->globalPos());
}

void TabBar::show_list() {
  pressed_ = {};
  auto* const menu = new QMenu(this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  for (platform::shown_tab const& tab : tabs_) {
    QString text = fontMetrics().elidedText(qstring(tab.title), Qt::ElideMiddle,
                                            menu_letters * fontMetrics().averageCharWidth());
    text.replace(QLatin1Char('&'), QLatin1String("&&"));
    if (tab.is_edited) text += QStringLiteral(" \u2022");
    QAction* const action = menu->addAction(text);
    action->setCheckable(true);
    action->setChecked(tab.id == selected_);
    connect(action, &QAction::triggered, this, [this, id = tab.id] {
      deliver([id](auto& delegate) { delegate.tabWasSelected(id); });
    });
  }
  Q_EMIT menu->aboutToShow();
  menu->popup(mapToGlobal(button_rect(part::list).bottomRight()) -
              QPoint(menu->sizeHint().width(), 0));
}

// Drags between windows.

void TabBar::drag_out(QPoint at) {
  std::size_t const index = *dragged_;
  platform::tab_id const id = tabs_[index].id;
  std::size_t const was = pressed_.index;
  dragged_.reset();
  pressed_ = {};
  if (index != was) deliver([id, index](auto& delegate) { delegate.tabWasMoved(id, index); });

  auto* const drag = new QDrag(this);  // Qt's own from here on
  auto* const data = new QMimeData;
  data->setData(tab_type, QByteArray::number(id));
  drag->setMimeData(data);
  QRect const area = tab_rect(index) & rect();
  drag->setPixmap(grab(area));
  drag->setHotSpot(QPoint(std::clamp(at.x() - area.left(), 0, area.width()), height() / 2));

  QPointer<TabBar> const self(this);
  Qt::DropAction dropped = Qt::IgnoreAction;
  bool was_cancelled = false;
  {
    EscapeWatch const watch;
    platform::waiting::scope const scope(platform::desktop::current().waits(), [&] {
      was_cancelled = true;
      QDrag::cancel();
    });
    dropped = drag->exec(Qt::MoveAction, Qt::MoveAction);
    was_cancelled |= watch.was_pressed;
  }
  if (self == nullptr || was_cancelled || dropped != Qt::IgnoreAction) return;
  deliver([id](auto& delegate) { delegate.tabWasDraggedOut(id); });
}

void TabBar::dragEnterEvent(QDragEnterEvent* event) {
  dragMoveEvent(event);
}

void TabBar::dragMoveEvent(QDragMoveEvent* event) {
  if (!dragged_tab(*event)) return event->ignore();
  lay_out();
  drop_gap_ = gap_at(event->position().toPoint().x());
  update();
  event->setDropAction(Qt::MoveAction);
  event->accept();
}

void TabBar::dragLeaveEvent(QDragLeaveEvent*) {
  drop_gap_.reset();
  update();
}

void TabBar::dropEvent(QDropEvent* event) {
  drop_gap_.reset();
  update();
  auto const id = dragged_tab(*event);
  if (!id) return event->ignore();
  std::size_t to = gap_at(event->position().toPoint().x());
  auto const own = index_of(*id);
  if (own && to > *own) --to;  // it leaves its own place
  event->setDropAction(Qt::MoveAction);
  event->accept();
  deliver([id = *id, to, is_own = own.has_value()](auto& delegate) {
    is_own ? delegate.tabWasMoved(id, to) : delegate.tabWasDroppedHere(id, to);
  });
}

}  // namespace widgets
