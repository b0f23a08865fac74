#include "encoding/lost_units.h"

#include <algorithm>
#include <bit>

#include "encoding/lanes.h"
#include "encoding/library_charset.h"
#include "encoding/tables.h"

// Asked of the whole text at each save in these charsets. Decoding the bytes again would tell the
// same, with two more copies of the text; here ASCII is passed over 16 units at a time.

namespace encoding {
namespace {

/// The first unit above 0x7F that `kept` refuses.
template <typename Kept>
char16_t const* find_lost(char16_t const* first, char16_t const* last, Kept kept) {
  unsigned char ignored[16];
  while (last - first >= 16) {
    unsigned mask = lanes::narrow(ignored, first, 0xFF80, 0xFFFF);
    for (; mask; mask &= mask - 1) {
      char16_t const* const unit = first + std::countr_zero(mask);
      if (!kept(*unit)) return unit;
    }
    first += 16;
  }
  return std::find_if(first, last, [&](char16_t unit) { return unit >= 0x80 && !kept(unit); });
}

}  // namespace

char16_t const* first_lost_unit(char16_t const* first, char16_t const* last, charset_t charset) {
  switch (charset) {
    case ASCII:
      return find_lost(first, last, [](char16_t) { return false; });
    case Latin1:
      return find_lost(first, last, [](char16_t unit) { return unit <= 0xFF; });
    case MacRoman:
      return find_lost(first, last, [&map = unicode_to_mac_roman()](char16_t unit) {
        return map.contains(unit);
      });
    case CP1252:
      // U+0080 to U+009F are written as bytes that stand for other characters.
      return find_lost(first, last, [&map = unicode_to_cp1252()](char16_t unit) {
        return unit <= 0xFF ? unit >= 0xA0 : map.contains(unit);
      });
    default:
      return is_of_library(charset) ? first_lost_by_library(first, last, charset) : last;
  }
}

}  // namespace encoding
