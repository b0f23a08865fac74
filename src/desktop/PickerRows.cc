#include "desktop/PickerRows.h"

#include "desktop/KeyTranslation.h"
#include "desktop/LeanStyle.h"
#include "desktop/QtText.h"

#include <QApplication>
#include <QPainter>
#include <QTextLayout>

#include <algorithm>
#include <limits>

namespace widgets {
namespace {

constexpr int longest_text = 1000;  // units that are laid out

QString on_one_line(QString text) {
  text.truncate(longest_text);
  for (QChar& c : text)
    if (c.category() == QChar::Other_Control || c == QChar::LineSeparator ||
        c == QChar::ParagraphSeparator)
      c = QLatin1Char(' ');
  return text;
}

QString right_text(platform::picker_row const& row) {
  QStringList keys;
  for (std::string const& key : row.keys) keys << key_string_for_display(key);
  return key_and_trigger(keys.join(QLatin1Char(' ')), on_one_line(qstring(row.trigger)));
}

QFont bold(QFont font) {
  font.setBold(true);
  return font;
}

/// Draws the title within the area and gives the width that it takes.
int draw_title(QPainter& painter, QRect const& area, platform::picker_row const& row) {
  QFont const strong = bold(painter.font());
  QString const text =
      QFontMetrics(row.matched.empty() ? painter.font() : strong)
          .elidedText(on_one_line(qstring(row.title)), Qt::ElideRight, area.width());
  QTextCharFormat in_bold;
  in_bold.setFontWeight(QFont::Bold);
  QList<QTextLayout::FormatRange> formats;
  for (std::size_t const at : row.matched)
    if (at < static_cast<std::size_t>(text.size()))
      formats.append({static_cast<int>(at), 1, in_bold});
  QTextLayout layout(text, painter.font(), painter.device());
  layout.setFormats(formats);
  layout.beginLayout();
  QTextLine line = layout.createLine();
  if (!line.isValid()) return 0;
  line.setLineWidth(std::numeric_limits<int>::max() / 512);
  layout.endLayout();
  layout.draw(&painter, QPointF(area.x(), area.y() + (area.height() - line.height()) / 2));
  return static_cast<int>(line.naturalTextWidth()) + 1;
}

int margin_of(QFontMetrics const& metrics) {
  return metrics.height() / 3;
}

}  // namespace

PickerModel::PickerModel(platform::picker_source& source, QObject* parent)
    : QAbstractListModel(parent), source_(source) {}

void PickerModel::reset() {
  beginResetModel();
  endResetModel();
}

platform::picker_row PickerModel::row_at(QModelIndex const& index) const {
  auto const row = static_cast<std::size_t>(index.row());
  return index.isValid() && row < source_.count() ? source_.row(row) : platform::picker_row();
}

int PickerModel::rowCount(QModelIndex const& parent) const {
  return parent.isValid() ? 0
                          : static_cast<int>(std::min<std::size_t>(
                                source_.count(), std::numeric_limits<int>::max()));
}

QVariant PickerModel::data(QModelIndex const& index, int role) const {
  if (role != Qt::DisplayRole && role != Qt::AccessibleTextRole) return {};
  platform::picker_row const row = row_at(index);
  QString const title = on_one_line(qstring(row.title));
  if (role == Qt::DisplayRole) return title;
  QStringList parts{title, on_one_line(qstring(row.detail)), right_text(row)};
  parts.removeAll(QString());
  return parts.join(QLatin1String(", "));
}

// Whether a row can be chosen is seen when it is painted: the view asks for the flags of many more.
Qt::ItemFlags PickerModel::flags(QModelIndex const&) const {
  return Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
}

PickerDelegate::PickerDelegate(PickerModel const& model, QObject* parent)
    : QStyledItemDelegate(parent), model_(model) {}

void PickerDelegate::paint(QPainter* painter, QStyleOptionViewItem const& option,
                           QModelIndex const& index) const {
  platform::picker_row const row = model_.row_at(index);
  bool const is_selected = option.state & QStyle::State_Selected;
  // The field has the focus, and yet keys go to this list.
  auto const group = row.enabled ? QPalette::Active : QPalette::Disabled;
  painter->save();
  if (is_selected)
    painter->fillRect(option.rect, option.palette.brush(QPalette::Active, QPalette::Highlight));
  QColor const color =
      option.palette.color(group, is_selected ? QPalette::HighlightedText : QPalette::Text);
  QColor dim = color;
  dim.setAlphaF(color.alphaF() * 0.65f);
  int const margin = margin_of(option.fontMetrics);
  QRect area = option.rect.adjusted(margin, 0, -margin, 0);
  painter->setFont(option.font);

  QString const right =
      option.fontMetrics.elidedText(right_text(row), Qt::ElideLeft, area.width() / 2);
  painter->setPen(dim);
  painter->drawText(area, Qt::AlignRight | Qt::AlignVCenter, right);
  if (!right.isEmpty())
    area.setRight(area.right() - option.fontMetrics.horizontalAdvance(right) - 2 * margin);

  painter->setPen(color);
  area.setLeft(area.left() + draw_title(*painter, area, row) + 2 * margin);
  painter->setPen(dim);
  if (area.width() > 4 * option.fontMetrics.height())
    painter->drawText(area, Qt::AlignLeft | Qt::AlignVCenter,
                      option.fontMetrics.elidedText(on_one_line(qstring(row.detail)),
                                                    Qt::ElideRight, area.width()));
  painter->restore();
}

// The same for all rows, so that none has to be asked for.
QSize PickerDelegate::sizeHint(QStyleOptionViewItem const& option, QModelIndex const&) const {
  QFontMetrics const strong(bold(option.font));
  int const height = std::max(option.fontMetrics.height(), strong.height());
  return {10 * height, height + 2 * (margin_of(option.fontMetrics) / 2 + 1)};
}

}  // namespace widgets
