#pragma once

#include "platform/graphics.h"

#include <optional>

namespace platform {

/// Lets the user choose a font for text, of fixed pitch. Modal and synchronous.
class font_panel {
 public:
  virtual ~font_panel() = default;
  /// Family and size chosen in place of those of `initial`; nothing when cancelled.
  virtual std::optional<font> run(font const& initial) = 0;
};

}  // namespace platform
