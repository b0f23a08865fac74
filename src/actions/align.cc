#include "actions/align.h"

#include <algorithm>

#include "actions/each_line.h"
#include "regex/traits.h"
#include "text/row_break.h"
#include "text/tab_width.h"

namespace actions {
namespace {

using text::unit_view;

bool is_space(text::char_t unit) {
  return regex::traits<text::char_t>::is_space(unit);
}

unit_view trimmed(unit_view line) {
  while (!line.empty() && is_space(line.back())) line.remove_suffix(1);
  while (!line.empty() && is_space(line.front())) line.remove_prefix(1);
  return line;
}

/// Calls `use` with each run of blanks that has words on both sides.
template <typename Use>
void each_gap(unit_view row, Use use) {
  std::size_t at = std::min(row.find_first_not_of(u" \t"), row.size());
  while ((at = row.find_first_of(u" \t", at)) != row.npos) {
    std::size_t const end = row.find_first_not_of(u" \t", at);
    if (end == row.npos) return;
    use(at, end);
    at = end;
  }
}

}  // namespace

std::u16string justified_row(unit_view row, std::size_t width, std::size_t tab_size) {
  std::size_t const present = text::expanded_width(row, 0, text::tab_stops(tab_size));
  std::size_t gaps = 0;
  each_gap(row, [&](std::size_t, std::size_t) { ++gaps; });
  if (gaps == 0 || present >= width) return std::u16string(row);

  std::size_t const missing = width - present;
  std::u16string result;
  std::size_t done = 0, gap = 0;
  each_gap(row, [&](std::size_t, std::size_t end) {
    result += row.substr(done, end - done);
    result.append(missing * (gap + 1) / gaps - missing * gap / gaps, u' ');
    ++gap;
    done = end;
  });
  result += row.substr(done);
  return result;
}

std::u16string aligned(unit_view text, alignment how, std::size_t width, std::size_t tab_size) {
  return with_each_line(text, [&](unit_view line, std::u16string& result) {
    line = trimmed(line);
    std::size_t const slack =
        width - std::min(width, text::expanded_width(line, 0, text::tab_stops(tab_size)));
    if (how == alignment::center) result.append(slack / 2, u' ');
    if (how == alignment::right) result.append(slack, u' ');
    if (how == alignment::justified)
      result += justified_row(line, width, tab_size);
    else
      result += line;
  });
}

}  // namespace actions
