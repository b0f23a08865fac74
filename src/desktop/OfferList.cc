#include "desktop/OfferList.h"

#include "desktop/QtText.h"

#include <QEvent>
#include <QKeyEvent>

#include <algorithm>

namespace widgets {
namespace {

constexpr std::size_t most_items = 8;
constexpr int widest = 560;  // pixels
constexpr int margin = 40;   // pixels at each side, at least

// The name of the file stands first, as in titles of windows.
QString title_of(platform::menu_item const& item) {
  QString const path = qstring(item.title);
  auto const slash = path.lastIndexOf(QLatin1Char('/'));
  if (slash < 0) return path;
  return QStringLiteral("%1  \u2014  %2")
      .arg(path.mid(slash + 1), path.left(std::max(slash, qsizetype(1))));
}

}  // namespace

OfferList::OfferList(QWidget& text, chooser choose, std::function<void()> leave)
    : QListWidget(&text), text_(text), choose_(std::move(choose)), leave_(std::move(leave)) {
  setFrameStyle(QFrame::NoFrame);
  setFocusPolicy(Qt::ClickFocus);
  setAccessibleName(QStringLiteral("Recent files"));
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setTextElideMode(Qt::ElideMiddle);
  setUniformItemSizes(true);
  setMouseTracking(true);
  viewport()->setCursor(Qt::PointingHandCursor);
  viewport()->setAutoFillBackground(false);
  connect(this, &QListWidget::itemEntered, this, [this](auto* item) { setCurrentItem(item); });
  connect(this, &QListWidget::itemClicked, this, [this](auto* item) { take(row(item)); });
  text_.installEventFilter(this);
  hide();
}

void OfferList::set_items(std::vector<platform::menu_item> items) {
  if (items.size() > most_items) items.resize(most_items);
  items_ = std::move(items);
  bool const had_focus = hasFocus();
  clear();
  if (items_.empty()) {
    hide();
    if (had_focus) leave_();
    return;
  }
  auto* const heading =
      new QListWidgetItem(QStringLiteral("Recent Files (\u2193 to choose)"), this);
  heading->setFlags(Qt::NoItemFlags);
  for (auto const& item : items_) {
    auto* const row = new QListWidgetItem(title_of(item), this);
    row->setToolTip(qstring(item.title));
  }
  fit();
  show();
}

void OfferList::enter() {
  setFocus();
  setCurrentRow(1);
}

// The first row is the heading.
void OfferList::take(int row) {
  if (row < 1 || row > static_cast<int>(items_.size())) return;
  platform::menu_item const chosen = items_[static_cast<std::size_t>(row) - 1];
  leave_();
  choose_(chosen);
}

void OfferList::fit() {
  int const width = std::min(widest, text_.width() - 2 * margin);
  int const height = sizeHintForRow(0) * count() + 2 * frameWidth();
  int const top = std::min(text_.height() / 4, text_.height() - height);
  setVisible(!items_.empty() && width > margin && top > margin);
  setGeometry((text_.width() - width) / 2, top, width, height);
}

bool OfferList::eventFilter(QObject* watched, QEvent* event) {
  if (watched == &text_ && event->type() == QEvent::Resize && !items_.empty()) fit();
  return QListWidget::eventFilter(watched, event);
}

// What is neither a movement nor a choice is the text's, which gets keys that nobody takes.
void OfferList::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Up:
      if (currentRow() <= 1) return leave_();
      [[fallthrough]];
    case Qt::Key_Down:
    case Qt::Key_Home:
    case Qt::Key_End:
      return QListWidget::keyPressEvent(event);
    case Qt::Key_Return:
    case Qt::Key_Enter:
      return take(currentRow());
    case Qt::Key_Escape:
      return leave_();
    default:
      event->ignore();
  }
}

void OfferList::focusOutEvent(QFocusEvent* event) {
  QListWidget::focusOutEvent(event);
  setCurrentRow(-1);
}

}  // namespace widgets
