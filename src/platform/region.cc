#include "platform/region.h"

#include <algorithm>

namespace wyn {
namespace {

using platform::rect;

// Appends to `out` what of `r` lies outside `hole`: at most four rectangles.
void subtract(rect const& r, rect const& hole, std::vector<rect>& out) {
  rect const common = r.intersection(hole);
  if (common.empty()) {
    out.push_back(r);
    return;
  }
  rect const pieces[] = {
      {r.x, r.y, r.width, common.y - r.y},
      {r.x, common.bottom(), r.width, r.bottom() - common.bottom()},
      {r.x, common.y, common.x - r.x, common.height},
      {common.right(), common.y, r.right() - common.right(), common.height},
  };
  std::copy_if(std::begin(pieces), std::end(pieces), std::back_inserter(out),
               [](rect const& piece) { return !piece.empty(); });
}

}  // namespace

void region::insert(std::vector<rect> const& rects) {
  auto const is_above = [](rect const& a, rect const& b) { return a.y < b.y; };
  for (rect const& r : rects) {
    tallest_ = std::max(tallest_, r.height);
    rects_.insert(std::upper_bound(rects_.begin(), rects_.end(), r, is_above), r);
  }
}

// Visits those that may meet `r`, until `visit` returns true.
template <typename Visit>
void region::visit_overlapping(rect const& r, Visit visit) const {
  auto at = std::partition_point(rects_.begin(), rects_.end(),
                                 [&](rect const& own) { return own.y < r.y - tallest_; });
  for (; at != rects_.end() && at->y <= r.bottom(); ++at)
    if (visit(*at)) return;
}

std::vector<rect> region::pieces_outside(rect const& r) const {
  std::vector<rect> result{r}, next;
  visit_overlapping(r, [&](rect const& hole) {
    if (!hole.intersects(r)) return false;
    next.clear();
    for (rect const& piece : result) subtract(piece, hole, next);
    result.swap(next);
    return result.empty();
  });
  return result;
}

void region::add(rect const& r) {
  if (!r.empty()) insert(pieces_outside(r));
}

std::vector<rect> region::minus(region const& other) const {
  std::vector<rect> result;
  for (rect const& r : rects_) {
    std::vector<rect> const pieces = other.pieces_outside(r);
    result.insert(result.end(), pieces.begin(), pieces.end());
  }
  return result;
}

region region::exclusive_or(region const& other) const {
  region result;
  result.insert(minus(other));
  result.insert(other.minus(*this));
  return result;
}

bool region::contains(platform::point p) const {
  bool found = false;
  visit_overlapping({p.x, p.y, 0, 0}, [&](rect const& own) { return found = own.contains(p); });
  return found;
}

bool region::intersects(rect const& r) const {
  bool found = false;
  visit_overlapping(r, [&](rect const& own) { return found = own.intersects(r); });
  return found;
}

rect region::bounds() const {
  rect all;
  for (rect const& r : rects_) all = all.united(r);
  return all;
}

}  // namespace wyn
