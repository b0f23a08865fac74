#include "textview/mouse/mouse_gesture.h"

#include <cmath>

namespace textview {

namespace {

constexpr double shortest_stroke = 24;  // pixels

}  // namespace

void mouse_gesture::begin(platform::point at) {
  begun_at_ = last_ = at;
  strokes_.clear();
}

bool mouse_gesture::move_to(platform::point at) {
  if (!begun_at_) return false;
  double const right = at.x - last_.x, down = at.y - last_.y;
  if (std::hypot(right, down) < shortest_stroke) return false;
  last_ = at;
  char const stroke =
      std::abs(right) > std::abs(down) ? (right > 0 ? 'R' : 'L') : (down > 0 ? 'D' : 'U');
  if (strokes_.ends_with(stroke)) return false;
  strokes_ += stroke;
  return true;
}

}  // namespace textview
