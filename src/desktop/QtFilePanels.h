#pragma once

#include "platform/panels/file_panel.h"

namespace widgets {

/// Open and save panels as dialogs before the active window.
class QtFilePanels final : public platform::file_panels {
 protected:
  std::vector<std::string> ask_open(platform::open_request const& request) override;
  std::optional<platform::save_answer> ask_save(platform::save_request const& request) override;
};

}  // namespace widgets
