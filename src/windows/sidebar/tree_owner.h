#pragma once

#include <string>
#include <vector>

#include "platform/menu.h"

namespace windows {

/// What the tree of a side bar needs of its window. Paths are absolute.
class tree_owner {
 public:
  struct file_state {
    bool has_tab = false;
    bool is_edited = false;  ///< and not saved
    bool is_shown = false;   ///< by the tab that is selected
  };
  virtual file_state stateOfFile(std::string const& path) const = 0;
  /// In a tab that stays, or until the next file is shown so. False if it can't be.
  virtual bool showTreeFile(std::string const& path, bool keeps) = 0;
  virtual void focusText() = 0;
  /// A file, or a folder with all that is in it, has another path now.
  virtual void fileWasMoved(std::string const& from, std::string const& to) = 0;
  /// Files have gone.
  virtual void filesWereRemoved() = 0;
  /// What relative paths begin at; "" if there is none.
  virtual std::string treeDirectory() const = 0;
  virtual std::vector<platform::menu_item> treeMenu() = 0;

 protected:
  ~tree_owner() = default;
};

}  // namespace windows
