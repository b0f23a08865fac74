#pragma once

#include "platform/system/descriptor.h"

#include <sys/types.h>

#include <string>

namespace quirn {

/// The editor, started as a program of its own: it outlives the tool and its terminal.
class started_editor {
 public:
  /// The one beside this program, else that of the PATH.
  started_editor();

  /// Whether it has ended, or could not be started.
  bool has_ended();
  /// What it has said on standard error.
  std::string messages() const;

 private:
  platform::descriptor messages_;
  pid_t process_ = -1;
};

}  // namespace quirn
