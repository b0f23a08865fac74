#include "desktop/BusyPanel.h"

#include "desktop/DialogParent.h"
#include "desktop/QtText.h"

#include <QEventLoop>
#include <QKeyEvent>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>

namespace widgets {
namespace {

bool is_input(QEvent::Type type) {
  switch (type) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::ShortcutOverride:
    case QEvent::Shortcut:
    case QEvent::InputMethod:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel:
    case QEvent::ContextMenu:
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
    case QEvent::TouchBegin:
    case QEvent::TabletPress:
    case QEvent::NativeGesture:
    case QEvent::Close:
    case QEvent::Quit:
      return true;
    default:
      return false;
  }
}

}  // namespace

bool BusyPanel::is_own(QObject const* target) const {
  if (dialog_ == nullptr) return false;
  for (QObject const* at = target; at != nullptr; at = at->parent())
    if (at == dialog_.get()) return true;
  return target == dialog_->windowHandle();
}

bool BusyPanel::eventFilter(QObject* target, QEvent* event) {
  bool const is_key = event->type() == QEvent::KeyPress;
  if (is_key && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
    cancelled_ = true;
    return true;
  }
  if (!is_input(event->type()) || is_own(target)) return false;
  event->ignore();
  return true;
}

bool BusyPanel::handle_events(double seconds) {
  if (!filtering_) qApp->installEventFilter(this);
  filtering_ = true;
  QEventLoop loop;
  QTimer limit;
  limit.setSingleShot(true);
  limit.setTimerType(Qt::PreciseTimer);
  limit.start(static_cast<int>(seconds * 1000));
  loop.processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
  return cancelled_;
}

void BusyPanel::show(std::string const& text) {
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
  QObject::connect(button, &QPushButton::clicked, this, [this] { cancelled_ = true; });
  QObject::connect(dialog_.get(), &QDialog::rejected, this, [this] { cancelled_ = true; });
  dialog_->show();
}

void BusyPanel::end() {
  if (filtering_) qApp->removeEventFilter(this);
  filtering_ = cancelled_ = false;
  dialog_.reset();
}

}  // namespace widgets
