#include "regex/unit_set.h"

namespace regex {

unit_set::unit_set(parse_tree::range_data const& members)
    : ranges_(members.ranges), classes_(members.classes) {
  for (auto const& member : classes_) {
    if (member.code == unit_class::word) (member.negate ? has_not_word_ : has_word_) = true;
  }
  for (unit_t u = 0; u < 128; ++u) {
    bool in_set = false;
    for (auto const& [low, high] : ranges_) in_set |= low <= u && u <= high;
    for (auto const& member : classes_) {
      if (member.code == unit_class::word) continue;
      in_set |= traits<unit_t>::is(member.code, u) != member.negate;
    }
    if (in_set) ascii_[u >> 6] |= std::uint64_t{1} << (u & 63);
  }
}

}  // namespace regex
