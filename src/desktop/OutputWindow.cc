#include "desktop/OutputWindow.h"

#include "desktop/QtText.h"
#include "desktop/TextOutputPage.h"
#include "desktop/web_module.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QScreen>
#include <QToolButton>
#include <QVBoxLayout>

namespace widgets {
namespace {

constexpr QSize initial_size(720, 560);

std::unique_ptr<OutputPage> make_page(platform::html_window_delegate& delegate) {
  std::string reason;
  if (auto page = make_web_page(delegate, reason)) return page;
  return std::make_unique<TextOutputPage>(delegate, reason);
}

}  // namespace

OutputFrame::OutputFrame(WindowOwner& owner, platform::window& window,
                         platform::html_window_delegate& delegate)
    : WindowFrame(owner, window), page_(make_page(delegate)) {
  message_ = new QLabel;
  message_->setWordWrap(true);
  message_->setMargin(4);
  message_->hide();
  state_ = new QLabel;
  state_->setMinimumWidth(80);
  stop_ = new QToolButton;
  stop_->setText(QStringLiteral("Stop Task"));
  stop_->setAutoRaise(true);
  stop_->setFocusPolicy(Qt::NoFocus);
  QObject::connect(stop_, &QToolButton::clicked, this, [this] { perform("stopTask:", {}); });

  auto* const bottom = new QHBoxLayout;
  bottom->setContentsMargins(6, 1, 6, 1);
  bottom->addWidget(state_);
  bottom->addStretch();
  bottom->addWidget(stop_);
  auto* const content = new QWidget;
  auto* const column = new QVBoxLayout(content);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(message_);
  column->addWidget(page_->widget(), 1);
  column->addLayout(bottom);
  setCentralWidget(content);
  page_->widget()->setFocus();
  set_busy(false);
}

// Before Qt deletes what is in the window.
OutputFrame::~OutputFrame() {
  page_->widget()->setParent(nullptr);
}

void OutputFrame::detach() {
  page_->detach();
  WindowFrame::detach();
}

void OutputFrame::take_initial_size() {
  if (!testAttribute(Qt::WA_Resized)) resize(initial_size.boundedTo(screen()->availableSize()));
}

void OutputFrame::set_busy(bool busy) {
  state_->setText(busy ? QStringLiteral("Running\u2026") : QStringLiteral("Done"));
  stop_->setEnabled(busy);
}

void OutputFrame::set_message(QString const& message) {
  message_->setText(message);
  message_->setVisible(!message.isEmpty());
}

// Those that the page had no use for.
void OutputFrame::keyPressEvent(QKeyEvent* event) {
  platform::key_event const key = keys_.translate(*event);
  if (!key.characters.empty() && perform_item_with_key(key)) return;
  if (event->key() == Qt::Key_F10 && event->modifiers() == Qt::NoModifier)
    return menus().open_first();
  WindowFrame::keyPressEvent(event);
}

void OutputWindow::set_title(std::string const& title) {
  widget().setWindowTitle(qstring(title));
}

void OutputWindow::close() {
  if (!begin_closing()) return;
  delegate()->windowWillClose();  // asks for its place; ends this object in a later turn
  hide();
}

void OutputWindow::set_message(std::string const& message) {
  widget().set_message(qstring(message));
}

}  // namespace widgets
