#pragma once

#include "platform/menu.h"
#include "platform/responder.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace bundles {

/// What bundle items need of the view at whose caret they act. Main thread only.
class item_view {
 public:
  /// The names of the scopes at the caret, outermost first and separated by blanks.
  virtual std::string scopeAtCaret() const = 0;
  virtual bool hasSelection() const = 0;
  /// Gets the actions that items stand for.
  virtual platform::responder& itemResponder() = 0;
  /// Lets the user choose an item, below the caret or, with `at_mouse`, where the mouse is; events
  /// are handled meanwhile. Nothing if there was no choice.
  virtual std::optional<std::size_t> chooseFromMenu(std::vector<platform::menu_item> const& items,
                                                    bool at_mouse) = 0;

 protected:
  ~item_view() = default;
};

}  // namespace bundles
