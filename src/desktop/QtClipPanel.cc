#include "desktop/QtClipPanel.h"

#include "desktop/DialogParent.h"
#include "desktop/QtText.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QEvent>
#include <QFontDatabase>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace widgets {
namespace {

// Closes when another window has got the keys, and not just lent them for a moment, as window
// managers do while they show a window.
class ClipDialog final : public QDialog {
 public:
  using QDialog::QDialog;

 protected:
  void changeEvent(QEvent* event) override {
    QDialog::changeEvent(event);
    if (event->type() != QEvent::ActivationChange || isActiveWindow()) return;
    QTimer::singleShot(patience, this, [this] {
      if (isVisible() && !isActiveWindow()) reject();
    });
  }

 private:
  static constexpr int patience = 500;  // milliseconds
};

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
                                            std::size_t selected,
                                            selection_observer const& did_select) {
  ClipDialog dialog(dialog_parent());
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
  QObject::connect(list, &QListWidget::currentRowChanged, &dialog, [&did_select](int row) {
    if (row >= 0) did_select(static_cast<std::size_t>(row));
  });
  list->setFocus();
  dialog.resize(520, 420);
  if (dialog.exec() != QDialog::Accepted || list->currentRow() < 0) return std::nullopt;
  return static_cast<std::size_t>(list->currentRow());
}

}  // namespace widgets
