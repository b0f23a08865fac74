#pragma once

#include "platform/geometry.h"

#include <utility>
#include <vector>

namespace wyn {

/// A set of points made of rectangles that do not overlap, such as the area of a selection.
/// Operations look only at rectangles whose heights overlap, so that some thousand rows of text,
/// one under the other, cost no more than each by itself.
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
  void insert(std::vector<platform::rect> const& rects);
  template <typename Visit>
  void visit_overlapping(platform::rect const& r, Visit visit) const;
  std::vector<platform::rect> pieces_outside(platform::rect const& r) const;
  std::vector<platform::rect> minus(region const& other) const;

  std::vector<platform::rect> rects_;  ///< by their upper edge
  double tallest_ = 0;                 ///< height of one of them
};

}  // namespace wyn
