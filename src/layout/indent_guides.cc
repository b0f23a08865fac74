#include "layout/indent_guides.h"

#include "text/row_break.h"
#include "text/tab_width.h"

#include <algorithm>
#include <tuple>

namespace layout {
namespace {

constexpr std::size_t most_blank_lines = 200;  // that are passed on the way to the next text
constexpr std::size_t most_units = 1000;       // of an indentation

text::unit_view start_of(text::storage const& storage, std::size_t line) {
  return storage.line_units(line).substr(0, most_units);
}

bool is_blank_line(text::storage const& storage, std::size_t line) {
  text::unit_view const units = start_of(storage, line);
  return std::all_of(units.begin(), units.end(), text::is_blank);
}

// The first of the blank lines that end before `line`.
std::size_t first_blank_before(text::storage const& storage, std::size_t line) {
  std::size_t first = line;
  while (first > 0 && line - first < most_blank_lines && is_blank_line(storage, first - 1)) --first;
  return first;
}

// After the blank lines that begin at `line`.
std::size_t after_blank_from(text::storage const& storage, std::size_t line) {
  std::size_t last = line;
  while (last < storage.lines() && last - line < most_blank_lines && is_blank_line(storage, last))
    ++last;
  return last;
}

bool closes_block(text::unit_view units) {
  std::size_t const text = units.find_first_not_of(u" \t");
  return text != units.npos && std::u16string_view(u"}])").find(units[text]) != units.npos;
}

}  // namespace

std::pair<std::size_t, std::size_t> indent_guides::affected_lines(text::storage const& storage,
                                                                  std::size_t first,
                                                                  std::size_t last) {
  return {first_blank_before(storage, first), after_blank_from(storage, last)};
}

std::size_t indent_guides::outline_of(text::view const& view, std::size_t line) {
  text::unit_view const units = start_of(*view.storage, line);
  if (is_blank_line(*view.storage, line)) return std::size_t(-1);
  return 2 * text::indent_width(units, text::tab_stops(view.tab_size)) + closes_block(units);
}

std::size_t indent_guides::depth_of_row(std::size_t row) {
  text::iterator const begin = view_.begin(row).base;
  std::size_t const depth = depth_of_line(begin.line);
  return begin.column == 0 ? depth : std::min(depth, view_.indent_of_row(row));
}

std::size_t indent_guides::depth_of_line(std::size_t line) {
  text::storage const& storage = *view_.storage;
  if (!is_blank_line(storage, line))
    return text::indent_width(start_of(storage, line), text::tab_stops(view_.tab_size));
  if (line < blank_first_ || line >= blank_last_) {
    std::tie(blank_first_, blank_last_) = affected_lines(storage, line, line + 1);
    blank_depth_ = depth_of_blank_lines(blank_first_, blank_last_);
  }
  return blank_depth_;
}

// They belong to the block that begins before them or that ends after them, else to what both
// neighbours are in.
std::size_t indent_guides::depth_of_blank_lines(std::size_t first, std::size_t last) const {
  text::storage const& storage = *view_.storage;
  if (first == 0 || last == storage.lines()) return 0;
  text::tab_stops const tabs(view_.tab_size);
  text::unit_view const next = start_of(storage, last);
  std::size_t const before = text::indent_width(start_of(storage, first - 1), tabs);
  std::size_t const after = text::indent_width(next, tabs);
  if (before < after) return before + 1;
  return before > after && closes_block(next) ? after + 1 : after;
}

}  // namespace layout
