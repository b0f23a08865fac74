#pragma once

#include "platform/panels/clip_panel.h"

namespace widgets {

/// The clips as a list in a dialog before the active window, with what the selected one holds.
class QtClipPanel final : public platform::clip_panel {
 protected:
  std::optional<std::size_t> ask(std::vector<platform::clip_entry> const& clips,
                                 std::size_t selected,
                                 selection_observer const& did_select) override;
};

}  // namespace widgets
