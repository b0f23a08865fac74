#include "desktop/StatusBar.h"

#include "desktop/Announcement.h"
#include "desktop/QtText.h"

#include <QAccessible>
#include <QFocusEvent>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleHints>
#include <QTimer>
#include <QToolTip>

#include <algorithm>

namespace widgets {
namespace {

constexpr int margin = 8;          // pixels at both sides of a part
constexpr int repaint_delay = 20;  // milliseconds
constexpr int blink_period = 600;  // milliseconds
constexpr int widest_text = 40;    // average characters; a heading may be as long as its line

struct part_kind {
  std::string_view key;
  char const* tool_tip;
  char const* widest;     // keeps the parts after it from moving while the caret does
  bool is_right = false;  // stands at the right edge
};

// From left to right.
constexpr part_kind part_kinds[] = {
    {"lineNumber", "Line and column of the caret", "Line 88888, Column 888"},
    {"selection", "What is selected", ""},
    {"incrementalSearch", "Incremental search", ""},
    {"isRecordingMacro", "Recording a macro", ""},
    {"pendingKeys", "Waiting for the next key or stroke; Escape cancels", ""},
    {"snippetField", "Tab goes to the next field of the snippet", ""},
    {"fileState", "What is to be known about the file before you save", ""},
    {"currentSymbol", "Symbol at the caret", ""},
    {"currentMode", "Language", "", true},
    {"tabSize", "Width of a tab", "Tab Size: 88", true},
    {"softTabs", "What the Tab key inserts", "Hard Tabs", true},
    {"fileEncoding", "Encoding of the file", "", true},
    {"lineEnding", "Line endings of the file", "", true},
    {"overwriteMode", "Typing inserts or overwrites", "OVR", true},
};

// What nobody has asked for, or who types has to know: a screen reader says it.
constexpr std::string_view announced[] = {"incrementalSearch", "isRecordingMacro", "pendingKeys",
                                          "snippetField",      "fileState",        "overwriteMode"};

constexpr std::string_view least_needed[] = {"currentSymbol", "selection"};

part_kind const* kind_of(std::string_view key) {
  auto const it = std::find_if(std::begin(part_kinds), std::end(part_kinds),
                               [&](part_kind const& kind) { return kind.key == key; });
  return it == std::end(part_kinds) ? nullptr : it;
}

}  // namespace

StatusBar::StatusBar(click_handler on_click, QWidget* parent)
    : QWidget(parent), on_click_(std::move(on_click)) {
  setMouseTracking(true);
  setAccessibleName(tr("Status bar"));
  setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

QSize StatusBar::sizeHint() const {
  return {0, fontMetrics().height() + 8};
}

void StatusBar::update_value(std::string_view key, plist::value const& value) {
  values_.insert_or_assign(std::string(key), value);
  if (key == "isRecordingMacro") {
    is_sign_filled_ = true;
    // Who has turned off the blinking of carets wants none here.
    if (value.boolean_or(false) && QGuiApplication::styleHints()->cursorFlashTime() > 0)
      blink_.start(blink_period, this);
    else
      blink_.stop();
  }
  if (!repaint_.isActive()) repaint_.start(repaint_delay, this);
}

void StatusBar::timerEvent(QTimerEvent* event) {
  if (event->timerId() == blink_.timerId())
    is_sign_filled_ = !is_sign_filled_;
  else {
    repaint_.stop();
    tell_changes();
  }
  update();
}

// The first values are no news.
void StatusBar::tell_changes() {
  if (!QAccessible::isActive()) return;
  bool const is_first = told_.empty();
  for (part_kind const& kind : part_kinds) {
    QString const text = text_of(kind.key);
    QString& told = told_[std::string(kind.key)];
    if (text == told) continue;
    told = text;
    bool const is_sign = kind.key == "isRecordingMacro";  // blinks
    if (is_first || std::count(std::begin(announced), std::end(announced), kind.key) == 0) continue;
    if (is_sign && !text.isEmpty() && !is_sign_filled_) continue;
    announce(*this, text);
  }
}

std::vector<std::string> StatusBar::shown_keys() const {
  std::vector<std::string> keys;
  for (part const& each : parts()) keys.push_back(each.key);
  return keys;
}

QString StatusBar::tool_tip_of(std::string_view key) const {
  part_kind const* const kind = kind_of(key);
  return kind == nullptr ? QString() : QLatin1String(kind->tool_tip);
}

QRect StatusBar::area_of(std::string_view key) const {
  for (part const& each : parts())
    if (each.key == key) return {each.x, 1, each.width, height() - 1};
  return {};
}

void StatusBar::press(std::string_view key) {
  if (QRect const area = area_of(key); !area.isEmpty())
    on_click_(std::string(key), mapToGlobal(QPoint(area.x(), 0)));
}

plist::value const& StatusBar::value(std::string_view key) const {
  static plist::value const nothing;
  auto const it = values_.find(key);
  return it == values_.end() ? nothing : it->second;
}

QString StatusBar::text_of(std::string_view key) const {
  plist::value const& v = value(key);
  if (!v) return {};
  if (key == "lineNumber")
    return QStringLiteral("Line %1, Column %2")
        .arg(v.integer_or(0) + 1)
        .arg(value("columnNumber").integer_or(0) + 1);
  if (key == "tabSize") {
    auto const name = QStringLiteral("Tab Size: %1").arg(v.integer_or(0));
    QString const origin = qstring(value("tabSizeOrigin").string_or(""));
    bool const is_told = origin.isEmpty() || value("tabSizeOrigin") == value("softTabsOrigin");
    return is_told ? name : QStringLiteral("%1 (%2)").arg(name, origin);
  }
  if (key == "softTabs") {
    auto const name =
        v.boolean_or(false) ? QStringLiteral("Soft Tabs") : QStringLiteral("Hard Tabs");
    QString const origin = qstring(value("softTabsOrigin").string_or(""));
    return origin.isEmpty() ? name : QStringLiteral("%1 (%2)").arg(name, origin);
  }
  if (key == "isRecordingMacro")
    return !v.boolean_or(false) ? QString()
           : is_sign_filled_    ? QStringLiteral("\u25CF Recording")
                                : QStringLiteral("\u25CB Recording");
  if (key == "overwriteMode")
    return v.boolean_or(false) ? QStringLiteral("OVR") : QStringLiteral("INS");
  return qstring(v.string_or(""));
}

// Those at the right have their places. What can be missed at the left goes where there is no room.
std::vector<StatusBar::part> StatusBar::parts() const {
  std::vector<part> list = parts_without({});
  for (std::vector<std::string_view> missed; !list.empty() &&
                                             missed.size() < std::size(least_needed) &&
                                             list.back().x + list.back().width > width();) {
    missed.push_back(least_needed[missed.size()]);
    list = parts_without(missed);
  }
  return list;
}

std::vector<StatusBar::part> StatusBar::parts_without(
    std::vector<std::string_view> const& missed) const {
  std::vector<part> list;
  int left = 0, right = 0;
  for (part_kind const& kind : part_kinds) {
    QString const whole = text_of(kind.key);
    if (whole.isEmpty() || std::count(missed.begin(), missed.end(), kind.key) > 0) continue;
    QString const text = fontMetrics().elidedText(whole, Qt::ElideRight,
                                                  widest_text * fontMetrics().averageCharWidth());
    int const least = fontMetrics().horizontalAdvance(QLatin1String(kind.widest));
    int const wide = std::max(least, fontMetrics().horizontalAdvance(text)) + 2 * margin;
    int& x = kind.is_right ? right : left;
    list.push_back({std::string(kind.key), text, x, wide, kind.is_right});
    x += wide + 1;
  }
  int const first_right = std::max(left, width() - right);
  for (part& each : list)
    if (each.is_right) each.x += first_right;
  return list;
}

StatusBar::part const* StatusBar::part_at(std::vector<part> const& parts, QPoint p) const {
  auto const it = std::find_if(parts.begin(), parts.end(), [&](part const& candidate) {
    return candidate.x <= p.x() && p.x() < candidate.x + candidate.width;
  });
  return it == parts.end() ? nullptr : &*it;
}

void StatusBar::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  QColor line = palette().color(QPalette::WindowText);
  line.setAlpha(60);
  painter.fillRect(0, 0, width(), 1, line);
  for (part const& p : parts()) {
    QRect const area(p.x, 1, p.width, height() - 1);
    bool const is_entered = hasFocus() && p.key == entered_;
    if (is_entered) {
      painter.fillRect(area, palette().color(QPalette::Highlight));
    } else if (p.key == hovered_) {
      QColor shade = line;
      shade.setAlpha(25);
      painter.fillRect(area, shade);
    }
    painter.setPen(palette().color(is_entered ? QPalette::HighlightedText : QPalette::WindowText));
    painter.drawText(area.adjusted(margin, 0, -margin, 0), Qt::AlignVCenter | Qt::AlignLeft,
                     p.text);
    painter.fillRect(p.is_right ? p.x - 1 : p.x + p.width, 4, 1, height() - 7, line);
  }
}

void StatusBar::mousePressEvent(QMouseEvent* event) {
  std::vector<part> const all = parts();
  part const* const hit = part_at(all, event->position().toPoint());
  if (hit != nullptr) press(hit->key);
}

void StatusBar::enter() {
  if (!hasFocus()) left_ = window()->focusWidget();
  entered_ = "lineNumber";
  setFocus(Qt::ShortcutFocusReason);
  update();
}

void StatusBar::entered_changed() {
  update();
  if (!QAccessible::isActive()) return;
  // Qt tells of the bar as a whole, later when it gets the focus now.
  QTimer::singleShot(0, this, [this] {
    QAccessibleInterface* const bar = QAccessible::queryAccessibleInterface(this);
    QAccessibleInterface* const part = bar == nullptr ? nullptr : bar->focusChild();
    if (part == nullptr) return;
    QAccessibleEvent event(part, QAccessible::Focus);
    QAccessible::updateAccessibility(&event);
  });
}

void StatusBar::leave() {
  if (left_ != nullptr) left_->setFocus(Qt::ShortcutFocusReason);
}

// By one part, as far as there are parts.
void StatusBar::move_by(int step) {
  std::vector<part> const all = parts();
  auto const it = std::find_if(all.begin(), all.end(),
                               [this](part const& each) { return each.key == entered_; });
  auto const at = static_cast<int>(it == all.end() ? 0 : it - all.begin()) + step;
  if (all.empty()) return;
  entered_ = all[static_cast<std::size_t>(std::clamp(at, 0, static_cast<int>(all.size()) - 1))].key;
  entered_changed();
}

// What is no key of the bar is for the text.
void StatusBar::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Backtab:
      return move_by(-1);
    case Qt::Key_Right:
    case Qt::Key_Tab:
      return move_by(1);
    case Qt::Key_Home:
      return move_by(-1000);
    case Qt::Key_End:
      return move_by(1000);
    case Qt::Key_Escape:
    case Qt::Key_F6:
      return leave();
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Space:
    case Qt::Key_Return:
    case Qt::Key_Enter:
      return open_entered();
    default:
      event->ignore();
  }
}

void StatusBar::open_entered() {
  leave();
  press(entered_);
}

bool StatusBar::focusNextPrevChild(bool) {
  return false;  // Tab goes from part to part
}

void StatusBar::mouseMoveEvent(QMouseEvent* event) {
  std::vector<part> const all = parts();
  part const* const hit = part_at(all, event->position().toPoint());
  hover(hit == nullptr ? std::string() : hit->key);
}

void StatusBar::leaveEvent(QEvent*) {
  hover({});
}

void StatusBar::hover(std::string key) {
  if (key == hovered_) return;
  hovered_ = std::move(key);
  update();
}

bool StatusBar::event(QEvent* event) {
  if (event->type() != QEvent::ToolTip) return QWidget::event(event);
  auto const* const help = static_cast<QHelpEvent*>(event);
  std::vector<part> const all = parts();
  part const* const hit = part_at(all, help->pos());
  QString tip;
  if (hit != nullptr) {
    tip = QLatin1String(kind_of(hit->key)->tool_tip);
    if (QString const whole = text_of(hit->key); whole != hit->text)
      tip += QStringLiteral(": ") + whole;
  }
  QToolTip::showText(help->globalPos(), tip, this);
  return true;
}

}  // namespace widgets
