#pragma once

#include "platform/geometry.h"

#include <optional>
#include <string>

namespace textview {

/// What a mouse draws while a button is held: strokes up, down, left and right, written as letters
/// such as "DR" for down and then to the right. A stroke is at least 24 pixels long, and goes where
/// it goes most.
class mouse_gesture {
 public:
  void begin(platform::point at);
  /// Whether that has made another stroke.
  bool move_to(platform::point at);
  void cancel() { begun_at_.reset(); }
  bool is_going_on() const { return begun_at_.has_value(); }
  platform::point begun_at() const { return *begun_at_; }  ///< is_going_on() must hold

  std::string const& strokes() const { return strokes_; }

 private:
  std::optional<platform::point> begun_at_;
  platform::point last_;  ///< where the last stroke got to
  std::string strokes_;
};

}  // namespace textview
