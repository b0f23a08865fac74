#include "encoding/encoded_size.h"

#include <bit>

#include "encoding/lanes.h"
#include "encoding/supplementary.h"

namespace encoding {
namespace {

constexpr char16_t beyond_one = 0xFF80, beyond_two = 0xF800;  // bits of units with more bytes

}  // namespace

// 16 units at a time: one byte each, and one more for each bound that a unit is beyond.
std::uint64_t utf8_size(char16_t const* first, char16_t const* last, bool pairs) {
  std::uint64_t size = static_cast<std::uint64_t>(last - first), longer = 0;
  unsigned char ignored[16];
  char16_t const *in = first, *const end = last;
  for (; end - in >= 16; in += 16) {
    unsigned const two = lanes::narrow(ignored, in, beyond_one, 0xFFFF);
    if (two == 0) continue;
    size += static_cast<unsigned>(std::popcount(two));
    longer += static_cast<unsigned>(std::popcount(lanes::narrow(ignored, in, beyond_two, 0xFFFF)));
  }
  for (; in != end; ++in) {
    size += (*in & beyond_one) != 0;
    longer += (*in & beyond_two) != 0;
  }
  size += longer;
  if (!pairs || longer == 0) return size;
  for (in = first; end - in > 1; ++in)
    if (is_high_surrogate(in[0]) && is_low_surrogate(in[1])) size -= 2;
  return size;
}

}  // namespace encoding
