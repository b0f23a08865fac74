#pragma once

#include "platform/panels/command_panel.h"

namespace widgets {

/// The panel as a dialog before the active window.
class QtCommandPanel final : public platform::command_panel {
 protected:
  std::optional<platform::filter_values> ask(
      platform::command_panel_request const& request) override;
};

}  // namespace widgets
