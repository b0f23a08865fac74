#pragma once

#include "platform/panels/alert.h"

namespace widgets {

/// Alerts as message boxes before the active window; those with details as dialogs that scroll.
class QtAlertPanel final : public platform::alert_panel {
 protected:
  std::size_t ask(platform::alert const& question) override;
};

}  // namespace widgets
