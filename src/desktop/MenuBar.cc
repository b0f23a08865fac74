#include "desktop/MenuBar.h"

#include "desktop/LeanStyle.h"
#include "desktop/QtText.h"
#include "keys/displayed_keys.h"
#include "keys/mnemonics.h"

#include <QAction>
#include <QActionGroup>
#include <QKeySequence>
#include <QToolButton>

namespace widgets {
namespace {

QString text_with_mnemonic(std::string const& title, std::size_t place) {
  auto const escaped = [](std::string_view part) {
    return qstring(part).replace(QLatin1Char('&'), QLatin1String("&&"));
  };
  if (place == std::string::npos) return escaped(title);
  return escaped(std::string_view(title).substr(0, place)) + QLatin1Char('&') +
         escaped(std::string_view(title).substr(place));
}

// Menus draw what follows a tab as the shortcut; it isn't taken as one.
QString with_key(QString const& text, platform::menu_item const& item) {
  std::string const keys =
      item.keys.empty() ? keys::displayed_key(item.key) : keys::displayed_keys(item.keys.front());
  QString const right = key_and_trigger(qstring(keys), qstring(item.trigger));
  return right.isEmpty() ? text : text + QLatin1Char('\t') + right;
}

using item_list = std::vector<platform::menu_item>;

/// What is shown: with the present items of dynamic lists, brought up to date.
item_list present(item_list const& items, MenuTarget& target) {
  item_list result;
  for (platform::menu_item const& item : items) {
    if (!item.dynamic.empty() && item.title.empty()) {
      for (platform::menu_item& each : present(target.dynamic_items(item.dynamic), target))
        result.push_back(std::move(each));
      continue;
    }
    platform::menu_item& made = result.emplace_back(item);
    if (!made.dynamic.empty()) made.items = target.dynamic_items(made.dynamic);
    if (!made.selector.empty()) validate(made, target);
  }
  return result;
}

void add_submenu(QMenu& menu, platform::menu_item& item, QString const& text, MenuTarget& target) {
  bool const empty = item.items.empty();
  QMenu* const submenu =
      make_menu(std::make_shared<item_list const>(std::move(item.items)), target, &menu);
  submenu->setTitle(text);
  submenu->setEnabled(!empty);
  menu.addMenu(submenu);
}

QAction* add_command(QMenu& menu, platform::menu_item const& item, QString const& text,
                     MenuTarget& target) {
  QAction* const action = menu.addAction(with_key(text, item));
  action->setEnabled(item.enabled);
  action->setCheckable(item.checkable || item.exclusive);
  action->setChecked(item.checked);
  QObject::connect(action, &QAction::triggered, &menu,
                   [&target, selector = item.selector, argument = item.argument] {
                     target.perform(selector, argument);
                   });
  return action;
}

void fill(QMenu& menu, item_list items, MenuTarget& target) {
  QStringList const texts = texts_with_mnemonics(items);
  QActionGroup* choices = nullptr;
  for (std::size_t i = 0; i < items.size(); ++i) {
    platform::menu_item& item = items[i];
    QString const& text = texts[static_cast<qsizetype>(i)];
    if (item.separator)
      menu.addSeparator();
    else if (item.selector.empty() && (!item.dynamic.empty() || item.enabled))
      add_submenu(menu, item, text, target);
    else if (QAction* const action = add_command(menu, item, text, target); item.exclusive)
      (choices != nullptr ? choices : choices = new QActionGroup(&menu))->addAction(action);
    if (!item.exclusive) choices = nullptr;
  }
}

void refill(QMenu& menu, item_list const& items, MenuTarget& target) {
  // Submenus and groups are owned by the menu and not by their actions: clear() alone would pile
  // them up.
  for (QAction* const action : menu.actions())
    if (action->menu() != nullptr) action->menu()->deleteLater();
  qDeleteAll(menu.findChildren<QActionGroup*>(Qt::FindDirectChildrenOnly));
  menu.clear();
  fill(menu, present(items, target), target);
}

}  // namespace

QStringList texts_with_mnemonics(std::vector<platform::menu_item> const& items) {
  std::vector<keys::mnemonic_title> titles;
  for (platform::menu_item const& item : items) titles.push_back({item.title, item.mnemonic});
  std::vector<std::size_t> const places = keys::mnemonic_places(titles);
  QStringList texts;
  for (std::size_t i = 0; i < items.size(); ++i)
    texts << text_with_mnemonic(items[i].title, places[i]);
  return texts;
}

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
  QStringList const titles = texts_with_mnemonics(*menus);
  for (std::size_t i = 0; i < menus->size(); ++i) {
    // Shares the list of all menus and points into it.
    QMenu* const menu = make_menu(menu_items(menus, &(*menus)[i].items), target, this);
    menu->setTitle(titles[static_cast<qsizetype>(i)]);
    addMenu(menu);
  }
}

bool MenuBar::open_menu(QString const& letter) {
  if (letter.isEmpty()) return false;
  QKeySequence const pressed(Qt::ALT | QKeySequence(letter.toUpper())[0].key());
  for (QAction* const action : actions())
    if (QKeySequence::mnemonic(action->text()) == pressed) {
      setActiveAction(action);
      return true;
    }
  return false;
}

void MenuBar::open_first() {
  if (!actions().isEmpty()) setActiveAction(actions().first());
}

}  // namespace widgets
