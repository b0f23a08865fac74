#include "desktop/OutputWindow.h"

#include "desktop/QtDesktop.h"
#include "desktop/QtText.h"
#include "desktop/TextOutputPage.h"
#include "desktop/web_module.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
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

OutputFrame::OutputFrame(QtDesktop& desktop, OutputWindow& window)
    : desktop_(desktop), window_(&window), page_(make_page(*window.delegate())) {
  setMenuBar(new MenuBar(desktop.main_menu(), *this, this));
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
  window_ = nullptr;
}

void OutputFrame::set_busy(bool busy) {
  state_->setText(busy ? QStringLiteral("Running\u2026") : QStringLiteral("Done"));
  stop_->setEnabled(busy);
}

void OutputFrame::set_message(QString const& message) {
  message_->setText(message);
  message_->setVisible(!message.isEmpty());
}

platform::responder* OutputFrame::menu_responder() {
  return window_ == nullptr ? nullptr : window_->first_responder();
}

std::vector<platform::menu_item> OutputFrame::dynamic_items(std::string_view name) {
  if (desktop_.application() == nullptr) return {};
  return desktop_.application()->dynamicItems(name);
}

void OutputFrame::perform(std::string_view selector, plist::value const& argument) {
  deliver([this, selector = std::string(selector), argument] {
    platform::responder* const first = menu_responder();
    if (first == nullptr || !first->tryToPerformWith(selector, argument)) desktop_.beep();
  });
}

void OutputFrame::deliver(std::function<void()> input) {
  desktop_.waits().deliver([self = QPointer(this), input = std::move(input)] {
    if (self != nullptr) input();
  });
}

void OutputFrame::closeEvent(QCloseEvent* event) {
  event->ignore();
  deliver([this] {
    if (window_ != nullptr && window_->delegate()->windowShouldClose() && window_ != nullptr)
      window_->close();
  });
}

// Those that the page had no use for.
void OutputFrame::keyPressEvent(QKeyEvent* event) {
  platform::key_event const key = keys_.translate(*event);
  platform::menu_item const* const found =
      key.characters.empty() ? nullptr : desktop_.item_for_key(key);
  if (found == nullptr) return QMainWindow::keyPressEvent(event);
  platform::menu_item item = *found;
  validate(item, *this);
  if (item.enabled)
    perform(item.selector, item.argument);
  else
    desktop_.beep();
}

void OutputFrame::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  if (event->type() != QEvent::ActivationChange || window_ == nullptr || !isActiveWindow()) return;
  desktop_.bring_to_front(*window_);
  window_->delegate()->windowDidBecomeKey();
}

OutputWindow::OutputWindow(QtDesktop& desktop, platform::html_window_delegate& delegate)
    : desktop_(desktop), delegate_(delegate), frame_(new OutputFrame(desktop, *this)) {
  desktop_.add(*this);
}

OutputWindow::~OutputWindow() {
  desktop_.remove(*this);
  frame_->detach();
  frame_->hide();
  frame_->deleteLater();
}

void OutputWindow::set_title(std::string const& title) {
  frame_->setWindowTitle(qstring(title));
}

void OutputWindow::make_key_and_order_front() {
  if (!frame_->isVisible() && !frame_->testAttribute(Qt::WA_Resized))
    frame_->resize(initial_size.boundedTo(frame_->screen()->availableSize()));
  frame_->show();
  frame_->raise();
  frame_->activateWindow();
  desktop_.bring_to_front(*this);
}

void OutputWindow::close() {
  if (closed_) return;
  closed_ = true;
  delegate_.windowWillClose();  // asks for its place; ends this object in a later turn
  frame_->hide();
  desktop_.window_closed();
}

void OutputWindow::deminiaturize() {
  frame_->setWindowState(frame_->windowState() & ~Qt::WindowMinimized);
}

std::string OutputWindow::placement() const {
  return utf8(QString::fromLatin1(frame_->saveGeometry().toBase64()));
}

void OutputWindow::set_placement(std::string const& placement) {
  frame_->restoreGeometry(QByteArray::fromBase64(QByteArray::fromStdString(placement)));
}

void OutputWindow::set_message(std::string const& message) {
  frame_->set_message(qstring(message));
}

}  // namespace widgets
