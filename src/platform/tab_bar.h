#pragma once

#include "platform/menu.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace platform {

/// Tells a tab from all others of the process, closed ones too; from 1.
using tab_id = std::uint32_t;

/// A tab as it is shown.
struct shown_tab {
  tab_id id = 0;
  std::string title;
  std::string tool_tip;
  bool is_edited = false;
};

/// What the user does with tabs. It comes when nothing waits, and the tab may have gone by then.
class tab_bar_delegate {
 public:
  virtual void tabWasSelected(tab_id tab) = 0;
  virtual void tabShouldClose(tab_id tab) = 0;
  /// `to` is the index that it shall have.
  virtual void tabWasMoved(tab_id tab, std::size_t to) = 0;
  /// A tab of another window was dropped so that it shall have this index.
  virtual void tabWasDroppedHere(tab_id tab, std::size_t to) = 0;
  /// It was dropped outside of all tab bars.
  virtual void tabWasDraggedOut(tab_id tab) = 0;
  virtual std::vector<menu_item> menuForTab(tab_id tab) = 0;

 protected:
  ~tab_bar_delegate() = default;
};

/// The tabs of a window. Main thread only.
class tab_bar {
 public:
  virtual ~tab_bar() = default;
  /// What costs a time that grows with their number is done when they are next drawn.
  virtual void set_tabs(std::vector<shown_tab> tabs, tab_id selected) = 0;
  /// Does nothing without such a tab.
  virtual void update_tab(shown_tab const& tab) = 0;
  virtual void select_tab(tab_id tab) = 0;
};

}  // namespace platform
