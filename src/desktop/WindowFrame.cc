#include "desktop/WindowFrame.h"

#include "platform/desktop.h"

#include <QCloseEvent>
#include <QPointer>

namespace widgets {

WindowFrame::WindowFrame(WindowOwner& owner, platform::window& window)
    : owner_(owner), window_(&window), menus_(new MenuBar(owner.main_menu(), *this, this)) {
  setMenuBar(menus_);
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
