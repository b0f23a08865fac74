#pragma once

#include <string>

namespace platform {

/// Keeps windows alive while something takes long, which is a waiting::scope of who does it. Main
/// thread only.
class busy_panel {
 public:
  virtual ~busy_panel() = default;

  /// False without a window; the work is then done in one go.
  virtual bool is_wanted() const = 0;
  /// Handles events for at most `seconds`. True once the user has cancelled with the button of what
  /// show() has shown, which is an Escape for the scopes that wait, too.
  virtual bool handle_events(double seconds) = 0;
  /// Says what is being done.
  virtual void show(std::string const& text) = 0;
  /// The work is over.
  virtual void end() = 0;
};

}  // namespace platform
