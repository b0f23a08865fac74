#pragma once

#include "app/batch_options.h"

#include <optional>
#include <string>
#include <vector>

namespace app {

/// What the program was called for.
struct command_line {
  enum class purpose { windows, batch, help, version, list_settings };
  purpose what = purpose::windows;
  batch_options batch;  ///< its files are those of windows too
  /// "-session ID", which a session manager adds when it starts the program again.
  std::vector<std::string> session;
  bool new_instance = false;  ///< beside one that runs
  std::string url = {};       ///< of the scheme "qrnt", to be opened; empty for none
};

/// What --help prints.
extern char const* const usage_text;

/// Reads the arguments that follow the program's name. Options and files may come in any order;
/// after "--" everything is a file. Nothing with a reason when they are wrong. Main thread only.
std::optional<command_line> parse_command_line(std::vector<std::string> const& arguments,
                                               std::string& error);

}  // namespace app
