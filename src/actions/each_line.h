#pragma once

#include <algorithm>
#include <utility>

#include "text/char_types.h"

namespace actions {

/// Calls `use(line, has_end)` for each line of a text, without its line end. Text that ends with
/// `\n` has no further line after that; an empty text has none at all.
template <typename Use>
void each_line(text::unit_view text, Use use) {
  while (!text.empty()) {
    std::size_t const length = std::min(text.find(u'\n'), text.size());
    bool const has_end = length < text.size();
    use(text.substr(0, length), has_end);
    text.remove_prefix(length + (has_end ? 1 : 0));
  }
}

/// The text with `change(line, result)` having appended what each line becomes, line ends kept.
template <typename Change>
std::u16string with_each_line(text::unit_view text, Change change) {
  std::u16string result;
  result.reserve(text.size() + text.size() / 8);
  each_line(text, [&](text::unit_view line, bool has_end) {
    change(line, result);
    if (has_end) result += u'\n';
  });
  return result;
}

}  // namespace actions
