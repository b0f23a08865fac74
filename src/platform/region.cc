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

void region::add(rect const& r) {
  if (r.empty()) return;
  region const fresh = [&] {
    region single;
    single.rects_.push_back(r);
    return single.minus(*this);
  }();
  rects_.insert(rects_.end(), fresh.rects_.begin(), fresh.rects_.end());
}

region region::minus(region const& other) const {
  region result = *this;
  std::vector<rect> next;
  for (rect const& hole : other.rects_) {
    next.clear();
    for (rect const& r : result.rects_) subtract(r, hole, next);
    result.rects_.swap(next);
  }
  return result;
}

region region::exclusive_or(region const& other) const {
  region result = minus(other);
  region const rest = other.minus(*this);
  result.rects_.insert(result.rects_.end(), rest.rects_.begin(), rest.rects_.end());
  return result;
}

bool region::contains(platform::point p) const {
  return std::any_of(rects_.begin(), rects_.end(), [&](rect const& r) { return r.contains(p); });
}

bool region::intersects(rect const& r) const {
  return std::any_of(rects_.begin(), rects_.end(),
                     [&](rect const& own) { return own.intersects(r); });
}

rect region::bounds() const {
  rect all;
  for (rect const& r : rects_) all = all.united(r);
  return all;
}

}  // namespace wyn
