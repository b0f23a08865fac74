#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace unicode {

/// A text in canonical decomposition (form D), and for each of its units the index of the unit of
/// the original that it came from. Marks keep the order in which they were written.
struct decomposed_text {
  std::u16string units;
  std::vector<std::uint32_t> origins;
};

/// Any thread. A lone surrogate stays as it is.
decomposed_text decompose(std::u16string_view text);

/// The canonical composed form (form C). Any thread; a lone surrogate stays as it is.
std::u16string compose(std::u16string text);

}  // namespace unicode
