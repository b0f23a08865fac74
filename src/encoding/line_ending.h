#pragma once

#include <array>
#include <cstddef>
#include <iterator>
#include <optional>
#include <string_view>

/// Line ends of files. In memory a line ends with a single LF.
namespace line_ending {

enum type { LF, CR, CRLF };

/// What the user defaults store, by type.
inline constexpr std::array<char const*, 3> key = {"lf", "cr", "crlf"};

/// What the header of a dropped file shows, by type. The order in the last one is meant.
inline constexpr std::array<char const*, 3> name = {"LF", "CR", "LF + CR"};

/// The type that the user defaults name by `key`; nothing for any other text.
std::optional<type> type_for_key(std::string_view key);

/// How often each line end occurs; the CR and LF of a CRLF are counted in neither `cr` nor `lf`.
struct counts {
  std::size_t cr = 0;
  std::size_t lf = 0;
  std::size_t crlf = 0;

  std::size_t lines_ended() const { return cr + lf + crlf; }
  bool mixed() const { return (cr != 0) + (lf != 0) + (crlf != 0) > 1; }
  /// The largest count wins; LF wins every tie, and CR a tie with CRLF.
  type prevailing() const;
  friend bool operator==(counts, counts) = default;
};

}  // namespace line_ending

namespace encoding {

/// Makes every CR, LF and CRLF in [first, last) an LF, in place. Units are 8 or 16 bits wide.
/// Gives the new end, and the prevailing line end in `*type` unless that is null.
template <typename It>
It harmonize_line_endings(It first, It last, line_ending::type* type) {
  using unit = std::iter_value_t<It>;
  line_ending::counts n;
  bool last_was_cr = false;
  It out = first;
  for (; first != last; ++first) {
    if (*first == unit('\r')) {
      *out++ = unit('\n');
      ++n.cr;
      last_was_cr = true;
    } else if (*first == unit('\n') && last_was_cr) {
      --n.cr;
      ++n.crlf;
      last_was_cr = false;
    } else {
      if (*first == unit('\n')) ++n.lf;
      *out++ = *first;
      last_was_cr = false;
    }
  }
  if (type) *type = n.prevailing();
  return out;
}

}  // namespace encoding
