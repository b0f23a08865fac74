#pragma once

#include "platform/graphics.h"

#include <optional>

namespace platform {

/// Lets the user choose a font for text, of fixed pitch. Modal and synchronous (waiting.h).
class font_panel {
 public:
  virtual ~font_panel() = default;
  /// Family and size chosen in place of those of `initial`; nothing when cancelled.
  std::optional<font> run(font const& initial);

 protected:
  virtual std::optional<font> ask(font const& initial) = 0;
};

}  // namespace platform
