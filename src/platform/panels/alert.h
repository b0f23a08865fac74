#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace platform {

enum class alert_icon { information, question, warning };

/// A question, or a message with one button, that the user must answer before continuing.
struct alert {
  std::string title;
  std::string text;
  std::vector<std::string> buttons;  // the first is the default one
  /// Index of the answer that loses nothing: what Escape, and batch mode, give.
  std::size_t safe_button = 0;
  bool critical = false;
  /// What doesn't fit a message: lines in fixed pitch that scroll, and can be selected and copied.
  std::string details = {};
  alert_icon icon = alert_icon::warning;  ///< of one that isn't critical
};

/// Modal and synchronous (waiting.h). While the program ends nothing is asked.
class alert_panel {
 public:
  virtual ~alert_panel() = default;
  /// The index of the button.
  std::size_t run(alert const& question);

 protected:
  virtual std::size_t ask(alert const& question) = 0;
};

}  // namespace platform
