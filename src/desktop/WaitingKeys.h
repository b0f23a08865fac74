#pragma once

#include <QKeyEvent>
#include <QObject>

namespace platform {
class waiting;
}

namespace widgets {

class BusyPanel;
class FindPanel;

/// Sees to it that no key is lost while something waits. Escape cancels it, and so
/// does Ctrl+C where it is a program. Keys that come to a
/// window that isn't for them, such as the busy panel or one that a dialog blocks, are handed to
/// where they were meant for, which holds them (TextViewWidget::deliver). Filters the events of the
/// application.
class WaitingKeys final : public QObject {
 public:
  WaitingKeys(platform::waiting& waits, BusyPanel const& busy, FindPanel const& find)
      : waits_(waits), busy_(busy), find_(find) {}

  bool eventFilter(QObject* target, QEvent* event) override;

 private:
  bool take_key(QWindow& window, QKeyEvent& event);
  QWidget* meant_by(QWidget& window) const;

  platform::waiting& waits_;
  BusyPanel const& busy_;
  FindPanel const& find_;
};

}  // namespace widgets
