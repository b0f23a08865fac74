#include "actions/indent.h"

#include "text/tab_width.h"

#include <algorithm>
#include <limits>

namespace actions::indent {
namespace {

// Calls `use` with each line, its line end included.
template <typename Use>
void each_line(text::unit_view text, Use use) {
  while (!text.empty()) {
    std::size_t const length = std::min(text.find(u'\n'), text.size() - 1) + 1;
    use(text.substr(0, length));
    text.remove_prefix(length);
  }
}

}  // namespace

std::size_t level(text::unit_view text, std::size_t tab_size) {
  std::size_t least = std::numeric_limits<std::size_t>::max();
  each_line(text, [&](text::unit_view line) {
    if (line.find_first_not_of(u" \t\n") != line.npos)
      least = std::min(least, text::indent_width(line, text::tab_stops(tab_size)));
  });
  return least;
}

std::size_t skip(text::unit_view line, std::size_t amount, std::size_t tab_size) {
  std::size_t column = 0, unit = 0;
  for (; unit < line.size() && (line[unit] == u' ' || line[unit] == u'\t'); ++unit) {
    column += line[unit] == u'\t' ? text::tab_width(column, text::tab_stops(tab_size)) : 1;
    if (column > amount) break;
  }
  return unit;
}

std::u16string cut_from_each_line(text::unit_view text, std::size_t amount, std::size_t tab_size) {
  std::u16string result;
  each_line(text,
            [&](text::unit_view line) { result += line.substr(skip(line, amount, tab_size)); });
  return result;
}

std::u16string prefix_each_line(text::unit_view text, text::unit_view prefix) {
  std::u16string result;
  bool is_first = true;
  each_line(text, [&](text::unit_view line) {
    if (!is_first && line != u"\n") result += prefix;
    result += line;
    is_first = false;
  });
  return result;
}

std::u16string blanks(std::size_t width, std::size_t tab_size, bool spaces) {
  std::size_t const tabs = spaces ? 0 : width / tab_size;
  return std::u16string(tabs, u'\t') + std::u16string(width - tabs * tab_size, u' ');
}

}  // namespace actions::indent
