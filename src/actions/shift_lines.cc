#include "actions/shift_lines.h"

#include <algorithm>

#include "actions/each_line.h"
#include "actions/indent.h"
#include "regex/traits.h"

namespace actions {
namespace {

using text::unit_view;

bool is_only_space(unit_view line) {
  return std::all_of(line.begin(), line.end(), regex::traits<text::char_t>::is_space);
}

/// The units of a comment marker that stays in place when what follows it moves to the left.
std::size_t marker_before_blank(unit_view line) {
  if (line.starts_with(u"*/")) return line.substr(2).find_first_of(u"\t ") == 0 ? 2 : 0;
  return line.starts_with(u"/*\t") || line.starts_with(u"//\t") ? 2 : 0;
}

/// The same for moving to the right, the tab after the marker included.
std::size_t marker_before_tab(unit_view line) {
  if (!line.starts_with(u"/*") && !line.starts_with(u"*/")) return 0;
  if (line.size() == 2) return 2;
  return line[2] == u'\t' ? 3 : 0;
}

}  // namespace

std::u16string shifted_left(unit_view text, std::size_t tab_size, bool soft_tabs) {
  // A mixed indentation loses one level of columns, whatever it is made of.
  if (soft_tabs) return indent::cut_from_each_line(text, tab_size, tab_size);
  return with_each_line(text, [](unit_view line, std::u16string& result) {
    std::size_t const marker = marker_before_blank(line);
    bool const is_indented =
        marker < line.size() && (line[marker] == u'\t' || line[marker] == u' ');
    result += line.substr(0, marker);
    result += line.substr(marker + (is_indented ? 1 : 0));
  });
}

std::u16string shifted_right(unit_view text, std::size_t tab_size, bool soft_tabs) {
  return with_each_line(text, [&](unit_view line, std::u16string& result) {
    std::size_t const marker = soft_tabs ? 0 : marker_before_tab(line);
    result += line.substr(0, marker);
    line.remove_prefix(marker);
    if (!is_only_space(line)) result.append(soft_tabs ? tab_size : 1, soft_tabs ? u' ' : u'\t');
    result += line;
  });
}

}  // namespace actions
