#include "desktop/AccessibleStatusBar.h"

#include "desktop/QtText.h"

#include <algorithm>

namespace widgets {

/// Gone, and yet there, while its part doesn't show.
class AccessibleStatusBar::Part final : public QAccessibleInterface,
                                        public QAccessibleActionInterface {
 public:
  Part(StatusBar& bar, std::string key) : bar_(bar), key_(std::move(key)) {}

  std::string const& key() const { return key_; }

  bool isValid() const override { return true; }
  QObject* object() const override { return nullptr; }
  QWindow* window() const override { return bar_.window()->windowHandle(); }
  QAccessibleInterface* parent() const override {
    return QAccessible::queryAccessibleInterface(&bar_);
  }
  QAccessibleInterface* child(int) const override { return nullptr; }
  QAccessibleInterface* childAt(int, int) const override { return nullptr; }
  int childCount() const override { return 0; }
  int indexOfChild(QAccessibleInterface const*) const override { return -1; }
  QString text(QAccessible::Text kind) const override {
    if (kind == QAccessible::Name) return bar_.text_of(key_);
    return kind == QAccessible::Description ? bar_.tool_tip_of(key_) : QString();
  }
  void setText(QAccessible::Text, QString const&) override {}
  QRect rect() const override {
    QRect const area = bar_.area_of(key_);
    return area.isEmpty() ? area : QRect(bar_.mapToGlobal(area.topLeft()), area.size());
  }
  QAccessible::Role role() const override { return QAccessible::Button; }
  QAccessible::State state() const override {
    QAccessible::State state;
    state.invisible = bar_.area_of(key_).isEmpty() || !bar_.isVisible();
    state.focusable = true;
    state.focused = bar_.hasFocus() && bar_.entered() == key_;
    state.hasPopup = true;
    return state;
  }
  void* interface_cast(QAccessible::InterfaceType type) override {
    return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                : nullptr;
  }

  QStringList actionNames() const override { return {pressAction()}; }
  void doAction(QString const& name) override {
    if (name == pressAction()) bar_.press(key_);
  }
  QStringList keyBindingsForAction(QString const&) const override { return {}; }

 private:
  StatusBar& bar_;
  std::string const key_;
};

AccessibleStatusBar::AccessibleStatusBar(StatusBar& bar)
    : QAccessibleWidget(&bar, QAccessible::StatusBar) {}

AccessibleStatusBar::~AccessibleStatusBar() {
  for (auto const& [key, id] : parts_) QAccessible::deleteAccessibleInterface(id);
}

QAccessibleInterface* AccessibleStatusBar::part_with(std::string const& key) const {
  if (auto const it = parts_.find(key); it != parts_.end())
    return QAccessible::accessibleInterface(it->second);
  auto* const part = new Part(bar(), key);
  parts_.emplace(key, QAccessible::registerAccessibleInterface(part));
  return part;
}

int AccessibleStatusBar::childCount() const {
  return static_cast<int>(bar().shown_keys().size());
}

QAccessibleInterface* AccessibleStatusBar::child(int index) const {
  std::vector<std::string> const keys = bar().shown_keys();
  auto const at = static_cast<std::size_t>(index);
  return index < 0 || at >= keys.size() ? nullptr : part_with(keys[at]);
}

int AccessibleStatusBar::indexOfChild(QAccessibleInterface const* child) const {
  auto const* const part = dynamic_cast<Part const*>(child);
  std::vector<std::string> const keys = bar().shown_keys();
  auto const it = part == nullptr ? keys.end() : std::find(keys.begin(), keys.end(), part->key());
  return it == keys.end() ? -1 : static_cast<int>(it - keys.begin());
}

QAccessibleInterface* AccessibleStatusBar::childAt(int x, int y) const {
  for (std::string const& key : bar().shown_keys())
    if (QAccessibleInterface* const part = part_with(key); part->rect().contains(x, y)) return part;
  return nullptr;
}

QAccessibleInterface* AccessibleStatusBar::focusChild() const {
  if (!bar().hasFocus()) return nullptr;
  return part_with(bar().entered());
}

}  // namespace widgets
