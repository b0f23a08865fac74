#include "actions/convert_spaces.h"

#include <algorithm>

#include "actions/each_line.h"
#include "text/convert_tabs.h"
#include "text/tab_width.h"

namespace actions {

std::u16string spaces_to_tabs(text::unit_view text, std::size_t tab_size,
                              std::size_t start_column) {
  return with_each_line(text, [&](text::unit_view line, std::u16string& result) {
    auto const expanded =
        text::convert_tabs_to_spaces(line, start_column, text::tab_stops(tab_size));
    text::unit_view rest(expanded.data(), expanded.size());
    std::size_t column = start_column;
    while (!rest.empty()) {
      text::unit_view const before = rest.substr(0, rest.find(u"  "));
      result += before;
      column += text::expanded_width(before, column, text::tab_stops(tab_size));
      rest.remove_prefix(before.size());
      std::size_t const run = std::min(rest.find_first_not_of(u' '), rest.size());
      std::size_t const spaces = std::min((column + run) % tab_size, run);
      result.append((tab_size - 1 + run - spaces) / tab_size, u'\t');
      result.append(spaces, u' ');
      column += run;
      rest.remove_prefix(run);
    }
  });
}

}  // namespace actions
