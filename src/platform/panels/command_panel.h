#pragma once

#include <optional>
#include <string>
#include <vector>

namespace platform {

/// A shell command, and which text it reads and changes; `input` and `output` are words of a list.
struct filter_values {
  std::string command;
  std::string input, output;
  bool each_row = false;  ///< of a column selection
};

struct command_panel_request {
  struct choice {
    std::string word, title;
  };

  filter_values initial;
  std::vector<filter_values> history;  ///< newest first
  std::vector<choice> inputs, outputs;
};

/// Lets the user type a command through which text is sent. Modal and synchronous (waiting.h).
class command_panel {
 public:
  virtual ~command_panel() = default;
  /// Nothing when cancelled.
  std::optional<filter_values> run(command_panel_request const& request);

 protected:
  virtual std::optional<filter_values> ask(command_panel_request const& request) = 0;
};

}  // namespace platform
