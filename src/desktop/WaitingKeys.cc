#include "desktop/WaitingKeys.h"

#include "desktop/BusyPanel.h"
#include "desktop/EditorWindow.h"
#include "desktop/FindBar.h"
#include "keys/WynKeyEvent.h"
#include "platform/waiting.h"

#include <QApplication>
#include <QLineEdit>
#include <QWindow>

namespace widgets {
namespace {

QWidget* widget_of(QWindow const& window) {
  for (QWidget* const widget : QApplication::topLevelWidgets())
    if (widget->windowHandle() == &window) return widget;
  return nullptr;
}

}  // namespace

bool WaitingKeys::eventFilter(QObject* target, QEvent* event) {
  bool const is_key = event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease;
  if (!is_key || !target->isWindowType()) return false;
  if (!waits_.is_waiting()) {
    if (event->type() != QEvent::KeyPress) return false;
    waits_.did_type();
    return executes_item(*static_cast<QWindow*>(target), *static_cast<QKeyEvent*>(event));
  }
  return take_key(*static_cast<QWindow*>(target), *static_cast<QKeyEvent*>(event));
}

bool WaitingKeys::take_key(QWindow& window, QKeyEvent& event) {
  QWidget* const widget = widget_of(window);
  bool const is_ours = widget != nullptr &&
                       (widget == busy_.dialog() || dynamic_cast<EditorFrame*>(widget) != nullptr);
  if (!is_ours) return false;
  bool const is_press = event.type() == QEvent::KeyPress;
  if (event.key() == Qt::Key_Escape) {
    if (is_press) waits_.escape();
    return true;
  }
  bool const is_interrupt = event.key() == Qt::Key_C && event.modifiers() == Qt::ControlModifier;
  if (is_interrupt && is_press && waits_.interrupt()) return true;
  QWidget* const meant = meant_by(*widget);
  if (meant == widget) return false;
  if (meant != nullptr) QCoreApplication::sendEvent(meant, &event);
  return true;
}

// Mnemonics of the find bar come first, and so do Return, Tab and the like.
bool WaitingKeys::executes_item(QWindow const& window, QKeyEvent const& event) {
  namespace mod = platform::modifier;
  QWidget const* const widget = widget_of(window);
  bool const is_field = dynamic_cast<EditorFrame const*>(widget) != nullptr &&
                        qobject_cast<QLineEdit*>(widget->focusWidget());
  if (!is_field || find_.has_mnemonic(event)) return false;
  platform::key_event const key = keys_.translate(event);
  std::uint32_t const held = WynKeyEvent::keyEventWithEvent(key).qualifiers();
  return (held & (mod::command | mod::control | mod::option)) != 0 && execute_item_(key);
}

// The window itself if there is no need to do anything. A panel in which one types gets what was
// typed before it had the focus; a question is not answered by keys that were meant for the text.
QWidget* WaitingKeys::meant_by(QWidget& window) const {
  QWidget* const dialog = QApplication::activeModalWidget();
  if (dialog != nullptr) {
    QWidget* const field = dialog->focusWidget();
    bool const takes_text = field != nullptr && field->testAttribute(Qt::WA_InputMethodEnabled);
    return takes_text ? field : window.focusWidget();
  }
  return &window == busy_.dialog() ? busy_.focus_before() : &window;
}

}  // namespace widgets
