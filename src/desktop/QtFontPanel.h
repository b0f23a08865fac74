#pragma once

#include "platform/font_panel.h"

namespace widgets {

/// The font dialog before the active window.
class QtFontPanel final : public platform::font_panel {
 public:
  std::optional<platform::font> run(platform::font const& initial) override;
};

}  // namespace widgets
