#pragma once

#include "platform/panels/prompt_panel.h"

namespace widgets {

/// Prompts as input dialogs before the active window.
class QtPromptPanel final : public platform::prompt_panel {
 protected:
  std::optional<std::string> ask(std::string const& title, std::string const& text,
                                 std::string const& initial) override;
};

}  // namespace widgets
