#pragma once

#include <string>

namespace path {

/// Why something could not be done with a file.
struct file_error {
  std::string operation;  ///< the system call that failed
  std::string path;       ///< what it was applied to
  int code = 0;           ///< errno
  std::string message;    ///< the cause, for the user: "No space left on device"
};

/// With the message that the system has for `code`.
file_error make_file_error(std::string operation, std::string path, int code);

/// "open /tmp/x: Permission denied", for logs.
std::string description(file_error const& error);

}  // namespace path
