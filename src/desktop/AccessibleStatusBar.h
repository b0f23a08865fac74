#pragma once

#include "desktop/StatusBar.h"

#include <QAccessibleWidget>

#include <map>
#include <string>

namespace widgets {

/// The status bar as assistive programs see it: a button for each part. Owned by Qt.
class AccessibleStatusBar final : public QAccessibleWidget {
 public:
  explicit AccessibleStatusBar(StatusBar& bar);
  ~AccessibleStatusBar() override;

  int childCount() const override;
  QAccessibleInterface* child(int index) const override;
  int indexOfChild(QAccessibleInterface const* child) const override;
  QAccessibleInterface* childAt(int x, int y) const override;
  QAccessibleInterface* focusChild() const override;

 private:
  class Part;

  StatusBar& bar() const { return static_cast<StatusBar&>(*widget()); }
  QAccessibleInterface* part_with(std::string const& key) const;

  mutable std::map<std::string, QAccessible::Id> parts_;  ///< those that were asked for, by key
};

}  // namespace widgets
