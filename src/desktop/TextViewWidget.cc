#include "desktop/TextViewWidget.h"

#include "desktop/ChoiceMenu.h"
#include "desktop/CompletionList.h"
#include "desktop/QtGraphics.h"
#include "desktop/QtText.h"
#include "desktop/TickedScrollBar.h"
#include "platform/desktop.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>
#include <QStyle>
#include <QStyleHints>

#include <algorithm>
#include <cmath>

namespace widgets {
namespace {

constexpr double glide_time = 40;  // ms in which two thirds of a way are gone

int frame_time(QScreen const* screen) {
  double const rate = screen != nullptr ? screen->refreshRate() : 60;
  return static_cast<int>(std::clamp(std::floor(1000 / std::max(rate, 1.0)), 4.0, 40.0));
}

platform::color from_qcolor(QColor const& c) {
  return {static_cast<std::uint8_t>(c.red()), static_cast<std::uint8_t>(c.green()),
          static_cast<std::uint8_t>(c.blue()), static_cast<std::uint8_t>(c.alpha())};
}

platform::rect from_qrect(QRect const& r) {
  return {double(r.x()), double(r.y()), double(r.width()), double(r.height())};
}

int to_scroll_range(double pixels) {
  return static_cast<int>(std::clamp(std::ceil(pixels), 0.0, 1.0e9));
}

}  // namespace

platform::palette platform_palette(QPalette const& p) {
  QPalette::ColorGroup const group = QPalette::Active;
  return {from_qcolor(p.color(group, QPalette::Text)), from_qcolor(p.color(group, QPalette::Base)),
          from_qcolor(p.color(group, QPalette::Highlight)),
          from_qcolor(p.color(group, QPalette::Text)),
          p.color(group, QPalette::Base).lightness() < 128};
}

TextViewWidget::TextViewWidget(platform::view_client& client, TextViewOwner& owner)
    : client_(&client), owner_(&owner), cells_(cells_for({}, devicePixelRatioF())) {
  setFrameStyle(QFrame::NoFrame);
  setFocusPolicy(Qt::StrongFocus);
  setAccessibleName(tr("Text"));
  setLayoutDirection(Qt::LeftToRight);
  setAttribute(Qt::WA_InputMethodEnabled);
  setInputMethodHints(Qt::ImhMultiLine | Qt::ImhNoAutoUppercase | Qt::ImhNoPredictiveText);
  setVerticalScrollBar(new TickedScrollBar(
      [this](std::size_t height) {
        return client_ == nullptr ? std::vector<std::size_t>() : client_->scroll_ticks(height);
      },
      this));
  // Soft wrap follows the width: a bar that comes and goes with the number of lines could flicker.
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
  viewport()->setMouseTracking(true);
  viewport()->setCursor(Qt::IBeamCursor);
  viewport()->setAcceptDrops(true);
  glide_timer_.setTimerType(Qt::PreciseTimer);
  connect(&glide_timer_, &QTimer::timeout, this, [this] { glide(); });
  client_->set_host(this);
}

void TextViewWidget::deliver(std::function<void(platform::view_client&)> input) {
  platform::desktop::current().waits().deliver_input(lives_, [this, input = std::move(input)] {
    if (client_ != nullptr) input(*client_);
  });
}

void TextViewWidget::detach() {
  end_access();
  if (client_ != nullptr) client_->set_host(nullptr);
  client_ = nullptr;
  owner_ = nullptr;
}

platform::point TextViewWidget::origin() const {
  return {double(horizontalScrollBar()->value()), double(verticalScrollBar()->value())};
}

platform::point TextViewWidget::to_view(QPointF local) const {
  return {local.x() + origin().x, local.y() + origin().y};
}

QPoint TextViewWidget::to_viewport(platform::point p) const {
  return QPointF(p.x - origin().x, p.y - origin().y).toPoint();
}

QRect TextViewWidget::on_screen(platform::rect const& r) const {
  QPoint const corner = viewport()->mapToGlobal(to_viewport({r.x, r.y}));
  return QRect(corner, QSizeF(r.width, r.height).toSize());
}

platform::rect TextViewWidget::visible_rect() const {
  platform::point const o = origin();
  return {o.x, o.y, double(viewport()->width()), double(viewport()->height())};
}

void TextViewWidget::scroll_to(platform::point origin) {
  glide_timer_.stop();
  set_scroll_bars({origin.x, origin.y});
}

void TextViewWidget::set_scroll_bars(QPointF origin) {
  horizontalScrollBar()->setValue(to_scroll_range(std::round(origin.x())));
  verticalScrollBar()->setValue(to_scroll_range(std::round(origin.y())));
}

// A desktop without animations has none here either.
void TextViewWidget::glide_by(platform::point distance) {
  bool const glides = glide_timer_.isActive();
  QPointF const from = glides ? glide_target_ : QPointF(origin().x, origin().y);
  glide_target_ = {std::clamp<double>(from.x() + distance.x, 0, horizontalScrollBar()->maximum()),
                   std::clamp<double>(from.y() + distance.y, 0, verticalScrollBar()->maximum())};
  if (!style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this))
    return scroll_to({glide_target_.x(), glide_target_.y()});
  if (glides) return;
  glide_at_ = {origin().x, origin().y};
  since_glide_.start();
  glide_timer_.start(frame_time(screen()));
}

// A share of what is left in each frame: at once where the wheel turns, and slow at the end.
void TextViewWidget::glide() {
  double const share = 1 - std::exp(-double(since_glide_.restart()) / glide_time);
  QPointF const left = glide_target_ - glide_at_;
  bool const ends = left.manhattanLength() < 1;
  glide_at_ += ends ? left : left * share;
  is_gliding_step_ = true;
  set_scroll_bars(glide_at_);
  is_gliding_step_ = false;
  if (ends) glide_timer_.stop();
}

void TextViewWidget::set_frame_size(platform::size s) {
  if (s == frame_) return;
  frame_ = s;
  update_scroll_bars();
}

void TextViewWidget::update_scroll_bars() {
  QSize const page = viewport()->size();
  horizontalScrollBar()->setRange(0, to_scroll_range(frame_.width - page.width()));
  verticalScrollBar()->setRange(0, to_scroll_range(frame_.height - page.height()));
  horizontalScrollBar()->setPageStep(page.width());
  verticalScrollBar()->setPageStep(std::max(1, page.height() - verticalScrollBar()->singleStep()));
}

void TextViewWidget::set_needs_display(platform::rect const& r) {
  platform::rect const shown = r.intersection(visible_rect());
  if (shown.empty()) return;
  QRectF const local(shown.x - origin().x, shown.y - origin().y, shown.width, shown.height);
  // At 125 % the edge of such a rectangle lies inside of a device pixel, which Qt may leave out.
  bool const is_scaled_evenly = devicePixelRatioF() == std::floor(devicePixelRatioF());
  int const margin = is_scaled_evenly ? 0 : 1;
  viewport()->update(local.toAlignedRect().adjusted(-margin, -margin, margin, margin));
}

platform::palette TextViewWidget::palette() const {
  return platform_palette(QWidget::palette());
}

platform::font_metrics TextViewWidget::metrics_for(platform::font const& f) const {
  return cells_for(f, devicePixelRatioF())->metrics();
}

void TextViewWidget::set_font(platform::font const& f) {
  cells_ = cells_for(f, devicePixelRatioF());
  platform::font_metrics const& metrics = cells_->metrics();
  verticalScrollBar()->setSingleStep(
      static_cast<int>(std::ceil(metrics.ascender - metrics.descender)) + 2);
  horizontalScrollBar()->setSingleStep(std::max(1, static_cast<int>(metrics.char_width * 2)));
  viewport()->update();
}

// A window may move to a screen with another resolution, of which not every platform sends word. A
// layout is no business of painting, so it follows.
void TextViewWidget::follow_device_pixels() {
  if (cells_->device_pixel_ratio() == devicePixelRatioF()) return;
  set_font(cells_->font());
  QTimer::singleShot(0, this, [this] {
    if (client_ != nullptr) client_->font_metrics_changed();
  });
}

void TextViewWidget::paintEvent(QPaintEvent* event) {
  QPainter painter(viewport());
  follow_device_pixels();
  if (client_ == nullptr) {
    painter.fillRect(event->rect(), QWidget::palette().base());
    return;
  }
  // The rectangles of a caret that moves lie far apart: painting what is between costs more.
  constexpr int max_rects = 6;
  QRegion const& region = event->region();
  QRect const whole = region.boundingRect();
  bool const few = region.rectCount() <= max_rects;
  for (QRect const* r = few ? region.begin() : &whole; r != (few ? region.end() : &whole + 1);
       ++r) {
    painter.setClipRect(*r);
    QtGraphics graphics(painter, *cells_, origin());
    platform::rect dirty = from_qrect(*r);
    dirty.x += origin().x;
    dirty.y += origin().y;
    client_->draw(graphics, dirty);
  }
}

void TextViewWidget::resizeEvent(QResizeEvent*) {
  update_scroll_bars();
  if (client_ != nullptr) client_->visible_rect_changed();
}

void TextViewWidget::scrollContentsBy(int dx, int dy) {
  if (!is_gliding_step_) glide_timer_.stop();  // the user has taken the scroll bar, say
  // The gutter stays where it is while the text moves sideways, and pixels can be moved by whole
  // device pixels only.
  bool const whole_pixels = devicePixelRatioF() == std::floor(devicePixelRatioF());
  if (dx != 0 || !whole_pixels || std::abs(dy) >= viewport()->height()) {
    viewport()->update();
  } else {
    viewport()->scroll(0, dy);
  }
  if (client_ != nullptr) client_->visible_rect_changed();
}

QSize TextViewWidget::sizeHint() const {
  if (client_ == nullptr) return QAbstractScrollArea::sizeHint();
  platform::size const s = client_->size_for(100, 36);
  return QSize(to_scroll_range(s.width) + verticalScrollBar()->sizeHint().width(),
               to_scroll_range(s.height));
}

bool TextViewWidget::event(QEvent* event) {
  // Every key is the view's: nothing else in the window may take one as its shortcut.
  if (event->type() == QEvent::ShortcutOverride) {
    event->accept();
    return true;
  }
  if (event->type() == QEvent::ScreenChangeInternal) follow_device_pixels();
  return QAbstractScrollArea::event(event);
}

void TextViewWidget::changeEvent(QEvent* event) {
  QAbstractScrollArea::changeEvent(event);
  if (event->type() == QEvent::ActivationChange || event->type() == QEvent::PaletteChange)
    focus_changed();
}

void TextViewWidget::focus_changed() {
  if (client_ == nullptr) return;
  client_->focus_changed();
  viewport()->update();
}

void TextViewWidget::focusInEvent(QFocusEvent*) {
  tell_modifiers(QGuiApplication::keyboardModifiers());
  focus_changed();
}

// What is being composed stays as text, unless the input method has seen to it already.
void TextViewWidget::focusOutEvent(QFocusEvent* event) {
  if (event->reason() != Qt::PopupFocusReason)
    deliver([](platform::view_client& client) { client.unmark_text(); });
  focus_changed();
}

void TextViewWidget::show_context_menu(std::vector<platform::menu_item> const& items,
                                       platform::point where) {
  if (owner_ != nullptr) owner_->pop_up_menu(items, viewport()->mapToGlobal(to_viewport(where)));
}

// At the pointer, unless that is elsewhere: then who chooses looks at the caret.
std::optional<std::size_t> TextViewWidget::choose_from_menu(
    std::vector<platform::menu_item> const& items, std::optional<platform::point> where,
    double font_size) {
  if (client_ == nullptr) return std::nullopt;
  QPoint const mouse = viewport()->mapFromGlobal(QCursor::pos());
  QPoint place = mouse + QPoint(-10, 6);
  if (where || !viewport()->rect().contains(mouse)) {
    platform::rect const caret = client_->caret_rect();
    place = to_viewport(where.value_or(platform::point{caret.x, caret.y + caret.height}));
  }
  return run_choice_menu(items, viewport()->mapToGlobal(place), font_size, this);
}

platform::completion_list* TextViewWidget::completions() {
  if (completions_ == nullptr) {
    completions_ =
        new CompletionList(*this, [this](platform::rect const& r) { return on_screen(r); });
  }
  completions_->set_cells(cells_);
  return completions_;
}

void TextViewWidget::show_cursor(platform::cursor cursor) {
  Qt::CursorShape const shape = cursor == platform::cursor::arrow  ? Qt::ArrowCursor
                                : cursor == platform::cursor::text ? Qt::IBeamCursor
                                                                   : Qt::CrossCursor;
  if (viewport()->cursor().shape() != shape) viewport()->setCursor(shape);
}

void TextViewWidget::hide_cursor_until_mouse_moves() {
  if (cursor_hidden_) return;
  cursor_hidden_ = true;
  viewport()->setCursor(Qt::BlankCursor);
}

void TextViewWidget::reset_cursor() {
  if (client_ == nullptr || cursor_hidden_) return;
  QPointF const local = viewport()->mapFromGlobal(QPointF(QCursor::pos()));
  show_cursor(client_->cursor_at(to_view(local),
                                 translate_modifiers(QGuiApplication::keyboardModifiers())));
}

}  // namespace widgets
