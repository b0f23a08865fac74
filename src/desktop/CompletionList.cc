#include "desktop/CompletionList.h"

#include "desktop/Announcement.h"
#include "desktop/QtGraphics.h"
#include "desktop/QtText.h"
#include "desktop/TextViewWidget.h"
#include "platform/clusters.h"
#include "platform/desktop.h"

#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace widgets {
namespace {

constexpr std::size_t most_rows = 10;     // in sight at once
constexpr std::size_t most_columns = 60;  // what is longer is cut off
constexpr int margin = 4;                 // pixels at each side of a row
constexpr int frame = 1;
constexpr int bar_width = 3;
constexpr int units_per_step = 120;  // of a wheel's angle: eighths of a degree

std::size_t columns_of(std::u16string_view text) {
  std::size_t columns = 0;
  for (std::size_t at = 0; at < text.size() && columns < most_columns;) {
    auto const cluster = unicode::cluster_at(text, at);
    columns += cluster.columns;
    at = cluster.end;
  }
  return std::min(columns, most_columns);
}

platform::color blended(platform::color a, platform::color b) {
  auto const mean = [](std::uint8_t x, std::uint8_t y) {
    return static_cast<std::uint8_t>((x * 3 + y) / 4);
  };
  return {mean(a.red, b.red), mean(a.green, b.green), mean(a.blue, b.blue)};
}

QColor qcolor(platform::color c) {
  return QColor(c.red, c.green, c.blue);
}

void draw_row(QtGraphics& graphics, platform::completion_row const& row, platform::point at,
              double cell, platform::color color) {
  std::size_t columns = 0;
  auto matched = row.matched.begin();
  for (std::size_t from = 0; from < row.text.size() && columns < most_columns;) {
    auto const cluster = unicode::cluster_at(row.text, from);
    while (matched != row.matched.end() && *matched < from) ++matched;
    bool const is_matched = matched != row.matched.end() && *matched < cluster.end;
    platform::text_style const style{.foreground = color, .bold = is_matched};
    std::u16string_view const text = std::u16string_view(row.text).substr(from, cluster.end - from);
    platform::point const baseline{at.x + static_cast<double>(columns) * cell, at.y};
    bool const is_plain = text.size() == 1 && text[0] < unicode::first_special_unit;
    if (is_plain && text[0] >= u' ') graphics.draw_run(text, baseline, cell, style);
    if (!is_plain) graphics.draw_cluster(text, baseline, cluster.columns * cell, style);
    columns += cluster.columns;
    from = cluster.end;
  }
}

}  // namespace

CompletionList::CompletionList(QWidget& text, placing place)
    : QWidget(&text, Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus),
      place_(std::move(place)) {
  setAttribute(Qt::WA_ShowWithoutActivating);
  setAttribute(Qt::WA_OpaquePaintEvent);
  setFocusPolicy(Qt::NoFocus);
  setLayoutDirection(Qt::LeftToRight);
  setWindowTitle(QStringLiteral("Completions"));
}

void CompletionList::set_cells(std::shared_ptr<FontCells> cells) {
  cells_ = std::move(cells);
  update();
}

int CompletionList::row_height() const {
  auto const& metrics = cells_->metrics();
  return static_cast<int>(std::ceil(metrics.ascender - metrics.descender)) + 2;
}

std::size_t CompletionList::shown_rows() const {
  return std::min(rows_.size(), most_rows);
}

void CompletionList::show_rows(std::vector<platform::completion_row> rows, std::size_t selected,
                               platform::rect const& word) {
  rows_ = std::move(rows);
  first_ = 0;
  selected_ = selected;
  scroll_to_selected();
  fit(place_(word));
  update();
  if (!isVisible()) show();
  announce_selected();
}

void CompletionList::announce_selected() {
  if (selected_ < rows_.size()) announce(*parentWidget(), qstring(rows_[selected_].text));
}

// Letters stand below the word's. Over the word where there is no room below, and on the screen.
void CompletionList::fit(QRect const& word) {
  std::size_t columns = 4;
  for (platform::completion_row const& row : rows_) {
    columns = std::max(columns, columns_of(row.text));
    if (columns == most_columns) break;
  }
  int const text_width =
      static_cast<int>(std::ceil(static_cast<double>(columns) * cells_->metrics().char_width));
  QSize const size(text_width + 2 * (margin + frame) + bar_width,
                   static_cast<int>(shown_rows()) * row_height() + 2 * frame);
  QRect const screen = parentWidget()->screen()->availableGeometry();
  QRect area(QPoint(word.left() - margin - frame, word.top() + word.height()), size);
  if (area.bottom() > screen.bottom() && word.top() - size.height() >= screen.top())
    area.moveTop(word.top() - size.height());
  area.moveRight(std::min(area.right(), screen.right()));
  area.moveLeft(std::max(area.left(), screen.left()));
  setGeometry(area);
}

void CompletionList::select_row(std::size_t row) {
  selected_ = row;
  scroll_to_selected();
  update();
  announce_selected();
}

void CompletionList::scroll_to_selected() {
  if (selected_ < first_) first_ = selected_;
  if (selected_ >= first_ + most_rows) first_ = selected_ + 1 - most_rows;
}

void CompletionList::hide_rows() {
  hide();
  rows_.clear();
  selected_ = first_ = 0;
}

void CompletionList::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  platform::palette const colors = platform_palette(palette());
  painter.fillRect(rect(), qcolor(blended(colors.background, colors.foreground)));
  QRect const inside = rect().adjusted(frame, frame, -frame, -frame);
  painter.fillRect(inside, qcolor(colors.background));
  QtGraphics graphics(painter, *cells_, {0, 0});
  auto const& metrics = cells_->metrics();
  QColor const on_selection = palette().color(QPalette::Active, QPalette::HighlightedText);
  for (std::size_t i = 0; i < shown_rows() && first_ + i < rows_.size(); ++i) {
    int const top = inside.top() + static_cast<int>(i) * row_height();
    bool const is_selected = first_ + i == selected_;
    if (is_selected)
      painter.fillRect(QRect(inside.left(), top, inside.width(), row_height()),
                       qcolor(colors.selection));
    platform::color const color =
        is_selected ? platform::color{static_cast<std::uint8_t>(on_selection.red()),
                                      static_cast<std::uint8_t>(on_selection.green()),
                                      static_cast<std::uint8_t>(on_selection.blue())}
                    : colors.foreground;
    draw_row(graphics, rows_[first_ + i],
             {double(inside.left() + margin), std::round(top + 1 + metrics.ascender)},
             metrics.char_width, color);
  }
  if (rows_.size() <= most_rows) return;
  double const height = inside.height(), count = static_cast<double>(rows_.size());
  painter.fillRect(QRectF(inside.right() + 1 - bar_width,
                          inside.top() + height * static_cast<double>(first_) / count, bar_width,
                          std::max(6.0, height * static_cast<double>(most_rows) / count)),
                   qcolor(blended(colors.foreground, colors.background)));
}

void CompletionList::mousePressEvent(QMouseEvent* event) {
  int const row = (static_cast<int>(event->position().y()) - frame) / row_height();
  std::size_t const clicked_row = first_ + static_cast<std::size_t>(std::max(row, 0));
  if (event->button() != Qt::LeftButton || clicked_row >= rows_.size()) return;
  platform::desktop::current().waits().deliver([call = clicked, clicked_row] {
    if (call) call(clicked_row);
  });
}

void CompletionList::scroll_by(int rows) {
  auto const last = static_cast<int>(rows_.size() - shown_rows());
  first_ = static_cast<std::size_t>(std::clamp(static_cast<int>(first_) + rows, 0, last));
  update();
}

void CompletionList::wheelEvent(QWheelEvent* event) {
  event->accept();
  wheel_rest_ += event->angleDelta().y() * 3;
  int const steps = wheel_rest_ / units_per_step;
  wheel_rest_ -= steps * units_per_step;
  scroll_by(-steps);
}

}  // namespace widgets
