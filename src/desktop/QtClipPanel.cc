#include "desktop/QtClipPanel.h"

#include "desktop/DialogParent.h"
#include "desktop/QtText.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace widgets {
namespace {

QListWidget* make_list(std::vector<platform::clip_entry> const& clips) {
  auto* const list = new QListWidget;
  list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  list->setUniformItemSizes(true);
  for (platform::clip_entry const& clip : clips)
    list->addItem(clip.remark.empty()
                      ? qstring(clip.title)
                      : QStringLiteral("(%1)  %2").arg(qstring(clip.remark), qstring(clip.title)));
  return list;
}

QPlainTextEdit* make_preview() {
  auto* const preview = new QPlainTextEdit;
  preview->setReadOnly(true);
  preview->setFocusPolicy(Qt::NoFocus);
  preview->setLineWrapMode(QPlainTextEdit::NoWrap);
  preview->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  return preview;
}

}  // namespace

std::optional<std::size_t> QtClipPanel::ask(std::vector<platform::clip_entry> const& clips,
                                            std::size_t selected) {
  QDialog dialog(dialog_parent());
  dialog.setWindowTitle(QStringLiteral("Clipboard History"));
  auto* const list = make_list(clips);
  auto* const preview = make_preview();
  auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  buttons->button(QDialogButtonBox::Ok)->setText(QStringLiteral("Paste"));
  auto* const column = new QVBoxLayout(&dialog);
  column->addWidget(list, 3);
  column->addWidget(preview, 2);
  column->addWidget(buttons);

  QObject::connect(list, &QListWidget::currentRowChanged, preview, [&clips, preview](int row) {
    bool const exists = row >= 0 && static_cast<std::size_t>(row) < clips.size();
    preview->setPlainText(exists ? qstring(clips[static_cast<std::size_t>(row)].preview)
                                 : QString());
  });
  QObject::connect(list, &QListWidget::itemDoubleClicked, &dialog, &QDialog::accept);
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  list->setCurrentRow(static_cast<int>(selected));
  list->setFocus();
  dialog.resize(520, 420);
  if (dialog.exec() != QDialog::Accepted || list->currentRow() < 0) return std::nullopt;
  return static_cast<std::size_t>(list->currentRow());
}

}  // namespace widgets
