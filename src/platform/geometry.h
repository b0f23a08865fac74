#pragma once

#include <algorithm>

/// Geometry of views: x grows to the right, y downwards, unit is the desktop's logical pixel.
namespace platform {

struct point {
  double x = 0, y = 0;
  friend bool operator==(point const&, point const&) = default;
};

struct size {
  double width = 0, height = 0;
  friend bool operator==(size const&, size const&) = default;
};

/// Half open: contains its left and top edge, not its right and bottom edge.
struct rect {
  double x = 0, y = 0, width = 0, height = 0;

  double right() const { return x + width; }
  double bottom() const { return y + height; }
  bool empty() const { return width <= 0 || height <= 0; }
  bool contains(point p) const { return x <= p.x && p.x < right() && y <= p.y && p.y < bottom(); }
  /// True when `r` lies wholly inside, shared edges included.
  bool contains(rect const& r) const {
    return x <= r.x && r.right() <= right() && y <= r.y && r.bottom() <= bottom();
  }
  bool intersects(rect const& r) const { return !intersection(r).empty(); }
  rect intersection(rect const& r) const {
    double const left = std::max(x, r.x), top = std::max(y, r.y);
    return {left, top, std::min(right(), r.right()) - left, std::min(bottom(), r.bottom()) - top};
  }
  /// The least rectangle that holds both; an empty one counts for nothing.
  rect united(rect const& r) const {
    if (empty()) return r;
    if (r.empty()) return *this;
    double const left = std::min(x, r.x), top = std::min(y, r.y);
    return {left, top, std::max(right(), r.right()) - left, std::max(bottom(), r.bottom()) - top};
  }
  rect inset(double dx, double dy) const {
    return {x + dx, y + dy, width - 2 * dx, height - 2 * dy};
  }

  friend bool operator==(rect const&, rect const&) = default;
};

}  // namespace platform
