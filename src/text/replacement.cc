#include "text/replacement.h"

#include <algorithm>
#include <utility>

#include "text/unit_search.h"

namespace text {

namespace {

/// Where the text ends that begins at `at`.
text::pos after(text::pos at, unit_view units) {
  size_t const newlines = count_unit(units, u'\n');
  if (newlines == 0) return {at.line, at.column + units.size()};
  return {at.line + newlines, units.size() - units.rfind(u'\n') - 1};
}

}  // namespace

replacement replacement::make(text::pos first, text_slice old_text, range_list ranges,
                              unit_view inserted, bool repeated) {
  unit_view const units = old_text.units;
  size_t length = units.size();
  for (range const& r : ranges) length = length - r.erased + r.inserted;
  text_block_builder builder(length);
  char_t* out = builder.data();
  size_t kept = 0;  // up to where the old text has been copied or left out
  char_t const* next = inserted.data();
  for (range const& r : ranges) {
    out = std::copy(units.data() + kept, units.data() + r.offset, out);
    out = std::copy(next, next + r.inserted, out);
    kept = size_t{r.offset} + r.erased;
    if (!repeated) next += r.inserted;
  }
  std::copy(units.data() + kept, units.data() + units.size(), out);
  return {first, std::move(old_text), builder.finish(length), std::move(ranges)};
}

replacement replacement::inverse() const {
  replacement result{first, new_text, old_text, ranges};
  uint32_t added = 0;
  for (range& r : result.ranges) {
    r.offset += added;
    added += r.inserted - r.erased;
    std::swap(r.erased, r.inserted);
  }
  return result;
}

std::vector<replacement::edit> replacement::edits() const {
  std::vector<edit> result;
  result.reserve(ranges.size());
  text::pos at = first;
  size_t seen = 0, seen_new = 0;
  for (range const& r : ranges) {
    size_t const gap = r.offset - seen;
    edit made;
    made.first = after(at, old_text.units.substr(seen, gap));
    made.last = after(made.first, old_text.units.substr(r.offset, r.erased));
    seen_new += gap;
    made.new_last = after(made.first, new_text.units.substr(seen_new, r.inserted));
    result.push_back(made);
    at = made.last;
    seen = size_t{r.offset} + r.erased;
    seen_new += r.inserted;
  }
  return result;
}

}  // namespace text
