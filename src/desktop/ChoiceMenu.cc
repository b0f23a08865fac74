#include "desktop/ChoiceMenu.h"

#include "desktop/QtText.h"
#include "platform/desktop.h"

#include <QKeyEvent>
#include <QMenu>
#include <QPointer>

namespace widgets {
namespace {

/// Takes digits, which Qt would want to be letters of the titles.
class NumberedMenu final : public QMenu {
 public:
  explicit NumberedMenu(QWidget* parent) : QMenu(parent) {}

  void add(platform::menu_item const& item, std::size_t number) {
    if (item.separator) {
      addSeparator();
      return;
    }
    QString text = qstring(item.title).replace(QLatin1Char('&'), QLatin1String("&&"));
    if (!item.key.empty()) text += QLatin1Char('\t') + qstring(item.key);
    QAction* const action = addAction(text);
    action->setEnabled(item.enabled);
    action->setData(static_cast<qulonglong>(number));
    if (!item.key.empty()) keys_.emplace_back(qstring(item.key), action);
  }

 protected:
  void keyPressEvent(QKeyEvent* event) override {
    for (auto const& [key, action] : keys_)
      if (event->text() == key) {
        setActiveAction(action);
        action->trigger();
        close();
        return;
      }
    QMenu::keyPressEvent(event);
  }

 private:
  std::vector<std::pair<QString, QAction*>> keys_;
};

}  // namespace

std::optional<std::size_t> run_choice_menu(std::vector<platform::menu_item> const& items,
                                           QPoint global, double font_size, QWidget* parent) {
  // Its parent may be closed meanwhile, and takes it along.
  QPointer const menu = new NumberedMenu(parent);
  QFont font = menu->font();
  font.setPointSizeF(font_size);
  menu->setFont(font);
  for (std::size_t number = 0; number < items.size(); ++number) menu->add(items[number], number);
  std::optional<std::size_t> chosen;
  QObject::connect(menu, &QMenu::triggered, menu, [&chosen](QAction* action) {
    chosen = static_cast<std::size_t>(action->data().toULongLong());
  });
  for (QAction* const action : menu->actions())
    if (action->isEnabled() && !action->isSeparator()) {
      menu->setActiveAction(action);
      break;
    }
  platform::waiting::scope const scope(platform::desktop::current().waits(), [&] {
    if (menu != nullptr) menu->close();
  });
  menu->exec(global);
  delete menu;
  return chosen;
}

}  // namespace widgets
