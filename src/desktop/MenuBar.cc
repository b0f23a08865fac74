#include "desktop/MenuBar.h"

#include "desktop/KeyTranslation.h"
#include "desktop/LeanStyle.h"
#include "desktop/QtText.h"

#include <QAction>
#include <QToolButton>

namespace widgets {
namespace {

QString escaped(std::string const& title) {
  return qstring(title).replace(QLatin1Char('&'), QLatin1String("&&"));
}

// Menus draw what follows a tab as the shortcut; it isn't taken as one.
QString text_with_key(platform::menu_item const& item) {
  QString const right = key_and_trigger(key_string_for_display(item.key), qstring(item.trigger));
  return right.isEmpty() ? escaped(item.title) : escaped(item.title) + QLatin1Char('\t') + right;
}

void fill(QMenu& menu, std::vector<platform::menu_item> const& items, MenuTarget& target);

void add_submenu(QMenu& menu, platform::menu_item const& item,
                 std::vector<platform::menu_item> items, MenuTarget& target) {
  bool const empty = items.empty();
  auto const shared = std::make_shared<std::vector<platform::menu_item> const>(std::move(items));
  QMenu* const submenu = make_menu(shared, target, &menu);
  submenu->setTitle(escaped(item.title));
  submenu->setEnabled(!empty);
  menu.addMenu(submenu);
}

void add_command(QMenu& menu, platform::menu_item item, MenuTarget& target) {
  validate(item, target);
  QAction* const action = menu.addAction(text_with_key(item));
  action->setEnabled(item.enabled);
  action->setCheckable(item.checked);
  action->setChecked(item.checked);
  QObject::connect(action, &QAction::triggered, &menu,
                   [&target, selector = item.selector, argument = item.argument] {
                     target.perform(selector, argument);
                   });
}

void add_item(QMenu& menu, platform::menu_item const& item, MenuTarget& target) {
  if (item.separator) {
    menu.addSeparator();
  } else if (!item.dynamic.empty() && item.title.empty()) {
    fill(menu, target.dynamic_items(item.dynamic), target);
  } else if (!item.dynamic.empty()) {
    add_submenu(menu, item, target.dynamic_items(item.dynamic), target);
  } else if (item.selector.empty()) {
    add_submenu(menu, item, item.items, target);
  } else {
    add_command(menu, item, target);
  }
}

void fill(QMenu& menu, std::vector<platform::menu_item> const& items, MenuTarget& target) {
  for (platform::menu_item const& item : items) add_item(menu, item, target);
}

void refill(QMenu& menu, std::vector<platform::menu_item> const& items, MenuTarget& target) {
  // Submenus are owned by the menu and not by their actions: clear() alone would pile them up.
  for (QAction* const action : menu.actions())
    if (action->menu() != nullptr) action->menu()->deleteLater();
  menu.clear();
  fill(menu, items, target);
}

}  // namespace

void validate(platform::menu_item& item, MenuTarget& target) {
  platform::responder* const known =
      platform::target_for_selector(target.menu_responder(), item.selector);
  item.enabled = known != nullptr;
  if (known != nullptr) known->validateMenuItem(item);
}

QMenu* make_menu(menu_items items, MenuTarget& target, QWidget* parent) {
  auto* const menu = new QMenu(parent);
  menu->setToolTipsVisible(false);
  QObject::connect(menu, &QMenu::aboutToShow, menu,
                   [menu, items = std::move(items), &target] { refill(*menu, *items, target); });
  return menu;
}

MenuBar::MenuBar(menu_items const& menus, MenuTarget& target, QWidget* parent) : QMenuBar(parent) {
  setNativeMenuBar(false);
  // What stands for the menus that don't fit; see LeanStyle.
  if (auto* const more = findChild<QToolButton*>(QStringLiteral("qt_menubar_ext_button")))
    more->setText(QStringLiteral("\u00BB"));
  for (platform::menu_item const& item : *menus) {
    // Shares the list of all menus and points into it.
    QMenu* const menu = make_menu(menu_items(menus, &item.items), target, this);
    menu->setTitle(escaped(item.title));
    addMenu(menu);
  }
}

bool MenuBar::open_menu(QString const& letter) {
  if (letter.isEmpty()) return false;
  for (QAction* const action : actions())
    if (action->text().startsWith(letter, Qt::CaseInsensitive)) {
      setActiveAction(action);
      return true;
    }
  return false;
}

}  // namespace widgets
