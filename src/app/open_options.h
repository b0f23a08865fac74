#pragma once

namespace app {

/// How a file is opened, beside where.
struct open_options {
  bool adds_to_recent = true;
  bool in_new_window = false;  ///< even if there is an empty one
};

}  // namespace app
