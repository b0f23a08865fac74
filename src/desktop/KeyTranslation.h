#pragma once

#include "desktop/KeyboardLayout.h"
#include "platform/event.h"

#include <QKeyEvent>
#include <QString>

#include <functional>
#include <memory>
#include <string>

namespace widgets {

std::uint32_t translate_modifiers(Qt::KeyboardModifiers modifiers);

/// From Qt's key presses to the logic's: Ctrl is command, Super control, Alt option.
class KeyTranslation {
 public:
  /// An event without characters stands for a key that means nothing by itself. Shortcuts on
  /// layouts without Latin letters come as the Latin characters of their keys.
  platform::key_event translate(QKeyEvent const& event);

 private:
  KeyboardLayout* layout();
  std::function<std::u16string(std::uint32_t)> latin_text(QKeyEvent const& event);

  // Not asked for at start: it costs some round trips to the X server.
  bool tried_layout_ = false;
  std::shared_ptr<KeyboardLayout> layout_;
  std::shared_ptr<LatinKeys> latin_keys_;  // where there is no layout to ask
};

/// As keys::displayed_key.
QString key_string_for_display(std::string_view key_string);

}  // namespace widgets
