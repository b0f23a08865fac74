#pragma once

#include <QApplication>
#include <QPointer>
#include <QTimer>
#include <QWidget>

namespace widgets {

/// The window that gets the focus back from a box that has just closed. The choice made in the box
/// may open a dialog before the focus has arrived there.
inline QPointer<QWidget> window_to_be_active;

inline void expect_active(QWidget* window) {
  window_to_be_active = window;
  QTimer::singleShot(0, [] { window_to_be_active = nullptr; });
}

/// The window before which a dialog opens; null if none is on screen. A window that was just closed
/// may still count as active, and would take its dialogs with it when it is destroyed.
inline QWidget* dialog_parent() {
  QWidget* active = QApplication::activeWindow();
  if (active == nullptr) active = window_to_be_active;
  return active != nullptr && active->isVisible() ? active : nullptr;
}

}  // namespace widgets
