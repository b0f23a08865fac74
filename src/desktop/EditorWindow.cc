#include "desktop/EditorWindow.h"

#include "desktop/QtDesktop.h"
#include "desktop/QtText.h"

#include <QCloseEvent>
#include <QFile>
#include <QLayout>
#include <QPointer>
#include <QScreen>
#include <QVBoxLayout>

namespace widgets {

EditorFrame::EditorFrame(QtDesktop& desktop, EditorWindow& window, platform::view_client& client)
    : desktop_(desktop), window_(&window), number_(window.number()) {
  menus_ = new MenuBar(desktop.main_menu(), *this, this);
  setMenuBar(menus_);
  text_ = new TextViewWidget(client, *this);
  status_ = new StatusBar(
      [this](std::string const& part, QPoint global) { open_status_menu(part, global); }, this);

  auto* const content = new QWidget;
  auto* const column = new QVBoxLayout(content);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(text_);
  column->addWidget(status_);
  setCentralWidget(content);
  text_->setFocus();
}

void EditorFrame::detach() {
  text_->detach();
  window_ = nullptr;
}

void EditorFrame::take_initial_size() {
  QSize const room = screen()->availableSize() - QSize(40, 60);  // its own frame, and some air
  resize(sizeHint().boundedTo(room));
}

platform::responder* EditorFrame::menu_responder() {
  return window_ == nullptr ? nullptr : window_->first_responder();
}

std::vector<platform::menu_item> EditorFrame::dynamic_items(std::string_view name) {
  if (desktop_.application() == nullptr) return {};
  return desktop_.application()->dynamicItems(name);
}

void EditorFrame::perform(std::string_view selector, plist::value const& argument) {
  deliver([this, selector = std::string(selector), argument] {
    platform::responder* const first = menu_responder();
    if (first == nullptr || !first->tryToPerformWith(selector, argument)) desktop_.beep();
  });
}

void EditorFrame::deliver(std::function<void()> input) {
  desktop_.waits().deliver([self = QPointer(this), input = std::move(input)] {
    if (self != nullptr) input();
  });
}

bool EditorFrame::should_swallow(platform::key_event const& event) {
  return desktop_.application() != nullptr && desktop_.application()->shouldSwallowEvent(event);
}

bool EditorFrame::perform_key_equivalent(platform::key_event const& event) {
  platform::menu_item const* const found = desktop_.item_for_key(event);
  if (found == nullptr) return false;
  platform::menu_item item = *found;
  validate(item, *this);
  if (item.enabled) {
    perform(item.selector, item.argument);
  } else {
    desktop_.beep();
  }
  return true;
}

bool EditorFrame::open_menu_with_letter(QString const& letter) {
  return menus_->open_menu(letter);
}

void EditorFrame::pop_up_menu(std::vector<platform::menu_item> const& items, QPoint global) {
  if (items.empty()) return;
  QMenu* const menu =
      make_menu(std::make_shared<std::vector<platform::menu_item> const>(items), *this, this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  menu->popup(global);
}

void EditorFrame::change_text_size(bool larger) {
  platform::menu_item item;
  item.selector = larger ? "makeTextLarger:" : "makeTextSmaller:";
  validate(item, *this);
  if (item.enabled) perform(item.selector, {});
}

void EditorFrame::open_status_menu(std::string const& part, QPoint global) {
  if (desktop_.application() == nullptr) return;
  std::vector<platform::menu_item> const items = desktop_.application()->statusMenu(part);
  pop_up_menu(items, global);
}

void EditorFrame::closeEvent(QCloseEvent* event) {
  event->ignore();
  deliver([this] {
    if (window_ != nullptr && window_->delegate()->windowShouldClose() && window_ != nullptr)
      window_->close();
  });
}

// A menu bar whose menus were opened and closed in quick succession may keep the focus, and has no
// use for a key; the text has.
void EditorFrame::keyPressEvent(QKeyEvent* event) {
  if (focusWidget() == text_) return QMainWindow::keyPressEvent(event);
  text_->setFocus();
  if (focusWidget() == text_) QCoreApplication::sendEvent(text_, event);
}

void EditorFrame::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  if (event->type() != QEvent::ActivationChange || window_ == nullptr || !isActiveWindow()) return;
  desktop_.bring_to_front(*window_);
  window_->delegate()->windowDidBecomeKey();
}

EditorWindow::EditorWindow(QtDesktop& desktop, platform::window_delegate& delegate,
                           platform::view_client& client, platform::responder& first)
    : desktop_(desktop),
      delegate_(delegate),
      first_(first),
      frame_(new EditorFrame(desktop, *this, client)) {
  desktop_.add(*this);
}

EditorWindow::~EditorWindow() {
  desktop_.remove(*this);
  frame_->detach();
  frame_->hide();
  frame_->deleteLater();
}

void EditorWindow::set_title(std::string const& title) {
  frame_->setWindowTitle(qstring(title).replace(QLatin1String("[*]"), QLatin1String("[*][*]")) +
                         QLatin1String("[*]"));
}

void EditorWindow::set_represented_filename(std::string const& path) {
  frame_->setWindowFilePath(QFile::decodeName(path.c_str()));
}

void EditorWindow::make_key_and_order_front() {
  if (!frame_->isVisible()) frame_->take_initial_size();
  frame_->show();
  frame_->raise();
  frame_->activateWindow();
  desktop_.bring_to_front(*this);
}

void EditorWindow::close() {
  if (closed_) return;
  closed_ = true;
  frame_->hide();
  desktop_.window_closed();
  delegate_.windowWillClose();  // may end this object
}

void EditorWindow::deminiaturize() {
  frame_->setWindowState(frame_->windowState() & ~Qt::WindowMinimized);
}

void EditorWindow::update_value(std::string_view key, plist::value const& value) {
  frame_->status().update_value(key, value);
}

}  // namespace widgets
