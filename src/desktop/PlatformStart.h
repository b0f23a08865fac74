#pragma once

#include <QtGlobal>

#include <string>

namespace widgets {

/// While this lives, Qt's platform is being started. Where that fails, Qt knows nothing but to
/// abort; then the program ends with `status` instead, and standard error has one line with
/// `what` could not be done and why: no such display, no such platform.
class PlatformStart {
 public:
  PlatformStart(char const* what, int status);
  PlatformStart(PlatformStart const&) = delete;
  PlatformStart& operator=(PlatformStart const&) = delete;
  ~PlatformStart();
};

}  // namespace widgets
