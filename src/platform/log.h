#pragma once

#include <string>

/// Messages on standard error: faults of files for which no alert is shown, such as a bad pattern
/// in a bundle. Any thread.
namespace platform {

/// Writes "Quirnote: ", the message and a line feed.
void log(std::string const& message);
/// The same, each message once in a process.
void log_once(std::string const& message);
/// Writes the text as it stands, but for what a terminal may take for a command (see escaped.h).
void log_text(std::string const& text);
/// The same, each text once in a process.
void log_text_once(std::string const& text);

}  // namespace platform
