#pragma once

#include "platform/menu.h"
#include "platform/responder.h"

#include <QMenu>
#include <QMenuBar>
#include <QStringList>

#include <memory>
#include <string_view>
#include <vector>

namespace widgets {

/// Where the items of menus go, and who says what state they are in.
class MenuTarget {
 public:
  /// Null when nothing can be done any more.
  virtual platform::responder* menu_responder() = 0;
  virtual std::vector<platform::menu_item> dynamic_items(std::string_view name) = 0;
  /// Performs the selector through the responder chain; beeps if no responder implements it.
  virtual void perform(std::string_view selector, plist::value const& argument) = 0;

 protected:
  ~MenuTarget() = default;
};

using menu_items = std::shared_ptr<std::vector<platform::menu_item> const>;

/// Brings the item up to date through the responder chain. Without anybody who knows its selector
/// it is disabled.
void validate(platform::menu_item& item, MenuTarget& target);

/// The titles, with the mark of Qt before the letter that chooses each.
QStringList texts_with_mnemonics(std::vector<platform::menu_item> const& items);

/// A menu that is made and validated each time it opens. `target` must outlive it.
QMenu* make_menu(menu_items items, MenuTarget& target, QWidget* parent);

/// The menus of a window. Shortcuts are shown but not taken: keys go through the text view.
class MenuBar final : public QMenuBar {
 public:
  /// One item of `menus` for each menu.
  MenuBar(menu_items const& menus, MenuTarget& target, QWidget* parent);

  /// Opens the menu of which `letter` is underlined; false if there is none.
  bool open_menu(QString const& letter);
  void open_first();

 protected:
  /// Qt's filter watches for Alt, which here is a modifier of the editor's own keys.
  bool eventFilter(QObject*, QEvent*) override { return false; }
};

}  // namespace widgets
