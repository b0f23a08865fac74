#pragma once

#include <algorithm>
#include <vector>

#include "encoding/charset.h"
#include "encoding/converters.h"
#include "encoding/probability.h"

namespace encoding {

/// Picks between the 8-bit charsets for bytes that are neither ASCII nor Unicode. A score must
/// be strictly greater to win, so that without statistics the choice falls on MacRoman where
/// Latin1 would have control characters, and on Latin1 elsewhere.
template <typename It>
charset_t estimate_8bit(It first, It last, character_weights const& weights = Probability,
                        std::uint32_t sample_size = N) {
  std::vector<char16_t> units;
  auto const score_decoded = [&](charset_t charset) {
    units.clear();
    convert_to_unicode(first, last, charset, std::back_inserter(units));
    return probabilityFor(units.begin(), units.end(), weights, sample_size);
  };
  float const mac_roman = score_decoded(MacRoman);
  if (canBeLatin1(first, last)) {
    return mac_roman > probabilityFor(first, last, weights, sample_size) ? MacRoman : Latin1;
  }
  return score_decoded(CP1252) > mac_roman ? CP1252 : MacRoman;
}

/// The charset that the bytes in [first, last), a forward range, are most likely in. Never
/// Unknown. See `estimate_buffer` for large contiguous input.
template <typename It>
charset_t estimate(It first, It last) {
  if (isASCII(first, last)) return ASCII;
  if (probabilityForUTF8(first, last) == 100) return UTF8;
  if (probabilityForUTF16BE(first, last) == 100) return UTF16BE;
  if (probabilityForUTF16LE(first, last) == 100) return UTF16LE;
  return estimate_8bit(first, last);
}

}  // namespace encoding
