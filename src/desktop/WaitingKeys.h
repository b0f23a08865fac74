#pragma once

#include "desktop/KeyTranslation.h"

#include <QKeyEvent>
#include <QObject>

#include <functional>
#include <utility>

namespace platform {
class waiting;
}

namespace widgets {

class BusyPanel;
class FindBar;

/// Sees to it that no key is lost while something waits. Escape cancels it, and so
/// does Ctrl+C where it is a program. Keys that come to a
/// window that isn't for them, such as the busy panel or one that a dialog blocks, are handed to
/// where they were meant for, which holds them (TextViewWidget::deliver). Otherwise a key with
/// which no field types executes its bundle item from fields beside the text, too. Filters the
/// events of the application.
class WaitingKeys final : public QObject {
 public:
  /// `execute_item` is false for a key that no bundle item has.
  WaitingKeys(platform::waiting& waits, BusyPanel const& busy, FindBar const& find,
              std::function<bool(platform::key_event const&)> execute_item)
      : waits_(waits), busy_(busy), find_(find), execute_item_(std::move(execute_item)) {}

  bool eventFilter(QObject* target, QEvent* event) override;

 private:
  bool take_key(QWindow& window, QKeyEvent& event);
  bool executes_item(QWindow const& window, QKeyEvent const& event);
  QWidget* meant_by(QWidget& window) const;

  platform::waiting& waits_;
  BusyPanel const& busy_;
  FindBar const& find_;
  std::function<bool(platform::key_event const&)> const execute_item_;
  KeyTranslation keys_;
};

}  // namespace widgets
