#pragma once

#include "platform/picker.h"

#include <QAbstractListModel>
#include <QStyledItemDelegate>

namespace widgets {

/// The rows of a source, which are asked for when they are painted.
class PickerModel final : public QAbstractListModel {
 public:
  /// `source` must outlive it.
  PickerModel(platform::picker_source& source, QObject* parent);

  /// To be called when the source has other rows.
  void reset();
  platform::picker_row row_at(QModelIndex const& index) const;

  int rowCount(QModelIndex const& parent) const override;
  /// The title, and all that is shown as what assistive technology reads.
  QVariant data(QModelIndex const& index, int role) const override;
  Qt::ItemFlags flags(QModelIndex const& index) const override;

 private:
  platform::picker_source& source_;
};

/// Paints a row: the title with its matched letters in bold, the detail, and at the right the keys.
class PickerDelegate final : public QStyledItemDelegate {
 public:
  /// `model` must outlive it, and be that of the views it paints for.
  PickerDelegate(PickerModel const& model, QObject* parent);

  void paint(QPainter* painter, QStyleOptionViewItem const& option,
             QModelIndex const& index) const override;
  QSize sizeHint(QStyleOptionViewItem const& option, QModelIndex const& index) const override;

 private:
  PickerModel const& model_;
};

}  // namespace widgets
