#pragma once

#include "platform/geometry.h"
#include "platform/run_loop.h"

#include <memory>
#include <optional>

namespace platform {
class view_host;
}

namespace textview {

/// A rectangle of a view that is shown for a moment. Main thread only.
class brief_flash {
 public:
  /// In the place of one that still shows.
  void show(platform::rect const& r, platform::view_host& host);
  /// At once, and must be called when the host goes; then `host` is null.
  void end(platform::view_host* host);
  std::optional<platform::rect> const& area() const { return area_; }

 private:
  std::optional<platform::rect> area_;
  std::unique_ptr<platform::timer> timer_;
};

}  // namespace textview
