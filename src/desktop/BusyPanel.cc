#include "desktop/BusyPanel.h"

#include "desktop/DialogParent.h"
#include "desktop/QtText.h"
#include "platform/desktop.h"

#include <QEventLoop>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace widgets {
bool BusyPanel::handle_events(double seconds) {
  QEventLoop loop;
  QTimer limit;
  limit.setSingleShot(true);
  limit.setTimerType(Qt::PreciseTimer);
  limit.start(static_cast<int>(seconds * 1000));
  loop.processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
  return cancelled_;
}

void BusyPanel::show(std::string const& text) {
  focus_before_ = QApplication::focusWidget();
  dialog_ = std::make_unique<QDialog>(dialog_parent());
  dialog_->setWindowTitle(qstring(text));
  auto* const column = new QVBoxLayout(dialog_.get());
  column->addWidget(new QLabel(qstring(text)));
  auto* const bar = new QProgressBar;
  bar->setRange(0, 0);
  bar->setTextVisible(false);
  bar->setMinimumWidth(260);
  column->addWidget(bar);
  auto* const button = new QPushButton(QStringLiteral("Cancel"));
  column->addWidget(button, 0, Qt::AlignRight);
  auto const cancel = [this] {
    cancelled_ = true;
    platform::desktop::current().waits().escape();
  };
  QObject::connect(button, &QPushButton::clicked, this, cancel);
  QObject::connect(dialog_.get(), &QDialog::rejected, this, cancel);
  dialog_->show();
}

void BusyPanel::end() {
  cancelled_ = false;
  dialog_.reset();
}

}  // namespace widgets
