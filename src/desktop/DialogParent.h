#pragma once

#include <QApplication>
#include <QWidget>

namespace widgets {

/// The window before which a dialog opens; null if none is on screen. A window that was just closed
/// may still count as active, and would take its dialogs with it when it is destroyed.
inline QWidget* dialog_parent() {
  QWidget* const active = QApplication::activeWindow();
  return active != nullptr && active->isVisible() ? active : nullptr;
}

}  // namespace widgets
