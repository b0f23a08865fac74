#include "desktop/WindowFrame.h"

#include "desktop/QtText.h"
#include "platform/desktop.h"

#include <QApplication>
#include <QCloseEvent>
#include <QPointer>

namespace widgets {

WindowFrame::WindowFrame(WindowOwner& owner, platform::window& window)
    : owner_(owner), window_(&window), menus_(new MenuBar(owner.main_menu(), *this, this)) {
  setMenuBar(menus_);
}

void WindowFrame::show_placed() {
  if (!isVisible() && !is_placed_) take_initial_size();
  is_placed_ = true;
  show();
}

std::string WindowFrame::placement() const {
  return isVisible() ? utf8(QString::fromLatin1(saveGeometry().toBase64())) : last_placement_;
}

void WindowFrame::set_placement(std::string const& placement) {
  if (!restoreGeometry(QByteArray::fromBase64(QByteArray::fromStdString(placement)))) return;
  is_placed_ = true;
  // A window is made to be seen, with its frame.
  setWindowState(windowState() & ~(Qt::WindowFullScreen | Qt::WindowMinimized));
  for (QWidget const* const other : QApplication::topLevelWidgets()) {
    bool const is_window = other != this && other->isVisible() && other->isWindow();
    // The window manager finds a place for what wasn't moved.
    if (is_window && other->pos() == pos()) setAttribute(Qt::WA_Moved, false);
  }
}

void WindowFrame::hide_placed() {
  last_placement_ = placement();
  hide();
}

platform::responder* WindowFrame::menu_responder() {
  return window_ == nullptr ? nullptr : window_->first_responder();
}

std::vector<platform::menu_item> WindowFrame::dynamic_items(std::string_view name) {
  if (owner_.application() == nullptr) return {};
  return owner_.application()->dynamicItems(name);
}

void WindowFrame::perform(std::string_view selector, plist::value const& argument) {
  deliver([this, selector = std::string(selector), argument] {
    platform::responder* const first = menu_responder();
    if (first == nullptr || !first->tryToPerformWith(selector, argument)) platform::beep();
  });
}

void WindowFrame::deliver(std::function<void()> input) {
  platform::desktop::current().waits().deliver([self = QPointer(this), input = std::move(input)] {
    if (self != nullptr) input();
  });
}

bool WindowFrame::perform_item_with_key(platform::key_event const& event) {
  platform::menu_item const* const found = owner_.item_for_key(event);
  if (found == nullptr) return false;
  platform::menu_item item = *found;
  validate(item, *this);
  if (item.enabled)
    perform(item.selector, item.argument);
  else
    platform::beep();
  return true;
}

void WindowFrame::closeEvent(QCloseEvent* event) {
  event->ignore();
  deliver([this] {
    if (window_ != nullptr && window_->delegate()->windowShouldClose() && window_ != nullptr)
      window_->close();
  });
}

void WindowFrame::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  if (event->type() != QEvent::ActivationChange || window_ == nullptr || !isActiveWindow()) return;
  owner_.bring_to_front(*window_);
  window_->delegate()->windowDidBecomeKey();
}

}  // namespace widgets
