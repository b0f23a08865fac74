#include "desktop/EditorWindow.h"

#include "desktop/QtText.h"

#include <QCoreApplication>
#include <QFile>
#include <QScreen>

namespace widgets {

EditorFrame::EditorFrame(WindowOwner& owner, platform::window& window,
                         platform::view_client& client)
    : WindowFrame(owner, window), number_(window.number()) {
  text_ = new TextViewWidget(client, *this);
  status_ = new StatusBar(
      [this](std::string const& part, QPoint global) { open_status_menu(part, global); }, this);

  offers_ = new OfferList(
      *text_->viewport(),
      [this](platform::menu_item const& item) { perform(item.selector, item.argument); },
      [this] { text_->setFocus(); });

  auto* const content = new QWidget;
  column_ = new QVBoxLayout(content);
  column_->setContentsMargins(0, 0, 0, 0);
  column_->setSpacing(0);
  column_->addWidget(text_, 1);
  column_->addWidget(status_);
  setCentralWidget(content);
  text_->setFocus();
}

void EditorFrame::detach() {
  text_->detach();
  if (tabs_ != nullptr) tabs_->detach();
  if (side_ != nullptr) side_->detach();
  WindowFrame::detach();
}

QSplitter& EditorFrame::splitter() {
  if (splitter_ != nullptr) return *splitter_;
  QWidget* const content = takeCentralWidget();
  splitter_ = new QSplitter;
  splitter_->setChildrenCollapsible(false);
  splitter_->setHandleWidth(1);
  splitter_->addWidget(content);
  splitter_->setStretchFactor(0, 1);
  setCentralWidget(splitter_);
  text_->setFocus();
  return *splitter_;
}

TabBar& EditorFrame::tabs(platform::tab_bar_delegate& delegate) {
  if (tabs_ != nullptr) return *tabs_;
  splitter();
  tabs_ = new TabBar(
      delegate, [this](auto const& items, QPoint global) { pop_up_menu(items, global); }, this);
  column_->insertWidget(0, tabs_);
  text_->installEventFilter(tabs_);
  return *tabs_;
}

platform::side_bar& EditorFrame::side(platform::tree_client& client, platform::responder& actions) {
  if (side_ == nullptr) side_ = new SideBar(client, actions, *this, splitter(), *text_);
  return *side_;
}

platform::responder* EditorFrame::focused_responder() const {
  return side_ == nullptr ? nullptr : side_->focused_responder();
}

void EditorFrame::take_initial_size() {
  QSize const room = screen()->availableSize() - QSize(40, 60);  // its own frame, and some air
  resize(sizeHint().boundedTo(room));
}

bool EditorFrame::should_swallow(platform::key_event const& event) {
  namespace mod = platform::modifier;
  bool const is_down = event.characters == std::u16string(1, platform::function_key::down) &&
                       (event.modifiers & ~(mod::keypad | mod::function)) == 0;
  if (offers_->isVisible() && is_down) {
    offers_->enter();
    return true;
  }
  return owner().application() != nullptr && owner().application()->shouldSwallowEvent(event);
}

bool EditorFrame::perform_key_equivalent(platform::key_event const& event) {
  return perform_item_with_key(event);
}

bool EditorFrame::perform_menu_key(QKeyEvent const& event) {
  platform::key_event const key = keys_.translate(event);
  return !key.characters.empty() && perform_key_equivalent(key);
}

bool EditorFrame::open_menu_with_letter(QString const& letter) {
  return menus().open_menu(letter);
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
  if (owner().application() == nullptr) return;
  std::vector<platform::menu_item> items = owner().application()->statusMenu(part);
  if (items.empty()) return;
  // What is all that a part has to offer needs no menu.
  if (items.size() == 1 && !items.front().selector.empty()) {
    validate(items.front(), *this);
    if (items.front().enabled) perform(items.front().selector, items.front().argument);
    return;
  }
  QMenu* const menu = make_menu(
      std::make_shared<std::vector<platform::menu_item> const>(std::move(items)), *this, this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  Q_EMIT menu->aboutToShow();  // it is filled now, and has its size
  menu->popup(global - QPoint(0, menu->sizeHint().height()));
}

// A menu bar whose menus were opened and closed in quick succession may keep the focus, and has no
// use for a key; what had the keyboard before has.
void EditorFrame::keyPressEvent(QKeyEvent* event) {
  if (focusWidget() == text_ || (side_ != nullptr && side_->has_focus()))
    return WindowFrame::keyPressEvent(event);
  QWidget* const last = side_ != nullptr ? &side_->last_focused() : text_;
  last->setFocus();
  if (focusWidget() == last) QCoreApplication::sendEvent(last, event);
}

void EditorWindow::set_title(std::string const& title) {
  widget().setWindowTitle(qstring(title).replace(QLatin1String("[*]"), QLatin1String("[*][*]")) +
                          QLatin1String("[*]"));
}

void EditorWindow::set_represented_filename(std::string const& path) {
  widget().setWindowFilePath(QFile::decodeName(path.c_str()));
}

void EditorWindow::close() {
  if (!begin_closing()) return;
  hide();
  delegate()->windowWillClose();  // may end this object
}

void EditorWindow::update_value(std::string_view key, plist::value const& value) {
  widget().status().update_value(key, value);
}

}  // namespace widgets
