#pragma once

#include "platform/font_panel.h"

namespace widgets {

/// The font dialog before the active window.
class QtFontPanel final : public platform::font_panel {
 protected:
  std::optional<platform::font> ask(platform::font const& initial) override;
};

}  // namespace widgets
