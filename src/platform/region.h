#pragma once

#include "platform/geometry.h"

#include <utility>
#include <vector>

namespace wyn {

/// A set of points made of rectangles that do not overlap, such as the area of a selection.
/// Meant for some hundred rectangles at most: operations are quadratic in their number.
class region {
 public:
  region() = default;
  region(platform::rect const& r) { add(r); }

  /// Makes the region hold the points of `r` too.
  void add(platform::rect const& r);
  /// The points that lie in just one of the two.
  region exclusive_or(region const& other) const;

  bool empty() const { return rects_.empty(); }
  bool contains(platform::point p) const;
  bool intersects(platform::rect const& r) const;
  platform::rect bounds() const;
  std::vector<platform::rect> const& rects() const& { return rects_; }
  /// Of a temporary: handed out, so that a loop may run over it.
  std::vector<platform::rect> rects() && { return std::move(rects_); }

 private:
  region minus(region const& other) const;
  std::vector<platform::rect> rects_;
};

}  // namespace wyn
