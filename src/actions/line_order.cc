#include "actions/line_order.h"

#include <algorithm>
#include <cstdint>
#include <unordered_set>
#include <vector>

#include "actions/each_line.h"

namespace actions {
namespace {

using text::unit_view;

std::vector<unit_view> lines_of(unit_view text) {
  std::vector<unit_view> lines;
  each_line(text, [&](unit_view line, bool) { lines.push_back(line); });
  return lines;
}

std::u16string text_of(std::vector<unit_view> const& lines, unit_view text) {
  std::u16string result;
  result.reserve(text.size());
  for (unit_view const line : lines) {
    result += line;
    result += u'\n';
  }
  if (!text.ends_with(u'\n') && !result.empty()) result.pop_back();
  return result;
}

/// Exchanges the ranges of surrogates and of the units after them, so that the order of units
/// becomes that of code points.
std::uint16_t code_point_order(text::char_t unit) {
  if (unit < 0xd800) return unit;
  return static_cast<std::uint16_t>(unit < 0xe000 ? unit + 0x2000 : unit - 0x800);
}

/// A line with its first four units as a number, which decides most comparisons.
struct sort_entry {
  std::uint64_t key = 0;
  unit_view line;

  explicit sort_entry(unit_view of) : line(of) {
    for (std::size_t i = 0; i < 4; ++i)
      key = key << 16 | (i < of.size() ? code_point_order(of[i]) : 0);
  }

  bool operator<(sort_entry const& other) const {
    if (key != other.key) return key < other.key;
    return std::lexicographical_compare(
        line.begin(), line.end(), other.line.begin(), other.line.end(),
        [](auto a, auto b) { return code_point_order(a) < code_point_order(b); });
  }
};

}  // namespace

std::u16string sorted_lines(unit_view text) {
  std::vector<sort_entry> entries;
  each_line(text, [&](unit_view line, bool) { entries.emplace_back(line); });
  std::sort(entries.begin(), entries.end());
  std::vector<unit_view> lines;
  lines.reserve(entries.size());
  for (auto const& entry : entries) lines.push_back(entry.line);
  return text_of(lines, text);
}

std::u16string unique_lines(unit_view text) {
  std::vector<unit_view> lines;
  std::unordered_set<unit_view> seen;
  each_line(text, [&](unit_view line, bool) {
    if (seen.insert(line).second) lines.push_back(line);
  });
  return text_of(lines, text);
}

std::u16string reversed_lines(unit_view text) {
  auto lines = lines_of(text);
  std::reverse(lines.begin(), lines.end());
  return text_of(lines, text);
}

std::u16string joined_lines(unit_view text) {
  std::u16string result;
  for (bool is_first = true;; is_first = false) {
    unit_view line = text.substr(0, text.find(u'\n'));
    text.remove_prefix(line.size());
    if (!is_first) {
      line.remove_prefix(std::min(line.find_first_not_of(u" \t"), line.size()));
      result.resize(result.find_last_not_of(u" \t") + 1);
      if (!line.empty() && !result.empty()) result += u' ';
    }
    result += line;
    if (text.empty()) return result;
    text.remove_prefix(1);
  }
}

}  // namespace actions
