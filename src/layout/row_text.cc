#include "layout/row_text.h"

#include <algorithm>

#include "grammar/tokenize_filter.h"
#include "layout/drawn_text.h"
#include "layout/geometry.h"
#include "platform/unicode.h"
#include "text/cluster.h"
#include "text/tab_width.h"
#include "text/views/view.h"

namespace layout {
namespace {

// The unit at which a row is broken belongs to none, and yet that of a long word has to be seen.
text::iterator end_of_shown(text::view const& view, std::size_t row) {
  text::iterator const end = view.end(row).base;
  if (row + 1 >= view.lines()) return end;
  text::iterator const next = view.begin(row + 1).base;
  return next.line == end.line ? next : end;
}

// Whether the character at a unit, or the one it is part of, is drawn together with those next to
// it.
bool is_in_script(text::unit_view line, std::size_t at) {
  return line[at] >= unicode::first_special_unit &&
         (unicode::is_combining(line[at]) || unicode::splits_pair(line, at) ||
          unicode::runs_right_to_left(unicode::code_point_at(line, at)));
}

// The start of the joined letters that a position is among: they are drawn from there, or with all
// of a long run that can be seen.
text::view_iterator before_script(text::view_iterator it, std::size_t row) {
  constexpr std::size_t most_units = 4096;
  text::unit_view const line = it.view->storage->line_units(it.base.line);
  std::size_t const begin = it.view->begin(row).base.column;
  std::size_t at = it.base.column;
  for (std::size_t n = 0; n < most_units && begin < at && at < line.size(); ++n) {
    std::size_t const before = text::previous_cluster(line, at);
    if (!unicode::runs_right_to_left(unicode::code_point_at(line, before))) break;
    at = before;
  }
  it.base.column = static_cast<std::uint32_t>(std::max(at, begin));
  return it;
}

// How many units of a row, from one of `line` on, are seen up to a column, and some more. A column
// may hold any number of marks, so there is a bound.
std::size_t seen_units(text::view const& view, std::size_t row, text::unit_view line,
                       std::size_t from, std::size_t last_column) {
  constexpr std::size_t margin = 8, most_units = 32768;
  std::size_t const column = last_column + margin;
  std::size_t const begin = view.begin(row).base.column, last = view.end(row).base.column;
  std::size_t end = begin + view.unit_at_row_column({row, column}).unit;
  if (end >= last) return line.size() - from;
  std::size_t const most = std::min(line.size(), from + most_units);
  while (++end < most && is_in_script(line, end)) continue;
  return std::min(end, most) - from;
}

void add_marked_text(drawn_text const& text_view, text::pos begin, row_text& row) {
  std::u16string const& marked = text_view.markedText();
  if (marked.empty()) return;
  text::iterator const caret = marked_text_place(*text_view.view()).base;
  if (caret.line != begin.line || caret.column < begin.column ||
      caret.column > begin.column + row.units.size())
    return;
  row.marked_first = caret.column - begin.column;
  row.marked_last = row.marked_first + marked.size();
  row.units.insert(row.marked_first, marked);
}

// Cuts the units, which begin at a column of the line, where the grammar says that their style
// changes. Marked text has the style of what is before it.
void add_spans(drawn_text const& text_view, grammar::line_tokens const& tokens, text::pos begin,
               row_text& row) {
  row.spans.push_back({0, text_view.styleOfPath(tokens.at(begin.column).path)});
  std::size_t const marked = row.marked_last - row.marked_first;
  auto const after =
      std::upper_bound(tokens.begin(), tokens.end(), begin.column,
                       [](std::size_t column, auto const& token) { return column < token.column; });
  for (auto it = after; it != tokens.end(); ++it) {
    auto const token = *it;
    std::size_t at = token.column - begin.column;
    if (at >= row.marked_first) at += marked;
    if (at >= row.units.size()) break;
    styles::drawn_style const& style = text_view.styleOfPath(token.path);
    if (style != row.spans.back().style) row.spans.push_back({at, style});
  }
}

}  // namespace

std::vector<row_text::span>::const_iterator row_text::span_at(std::size_t index) const {
  auto const after =
      std::upper_bound(spans.begin(), spans.end(), index,
                       [](std::size_t at, span const& other) { return at < other.first; });
  return after - 1;
}

std::size_t row_text::column_of(std::size_t index) const {
  auto const after =
      std::upper_bound(pieces.begin(), pieces.end(), index,
                       [](std::size_t at, auto const& other) { return at < other.first; });
  if (after == pieces.begin()) return column;
  text_cells::piece const& piece = *(after - 1);
  if (index >= piece.last) return piece.column + piece.width;
  if (piece.kind == text_cells::kind::run) return piece.column + (index - piece.first);
  std::u16string_view const before(units.data() + piece.first, index - piece.first);
  return piece.column + std::min(text::expanded_width(before, 0, text::tab_stops(1)), piece.width);
}

row_text visible_text(drawn_text const& text_view, text::row_pos const& first,
                      std::size_t last_column) {
  std::size_t const row = first.row;
  text::view const& view = *text_view.view();
  auto const from = before_script(iter_from_view_pos(&view, first, text::freehanded_t::off), row);
  text::pos const begin = from.base.pos();
  std::size_t const end = end_of_shown(view, row).column, available = end - begin.column;
  text::unit_view const line = view.storage->line_units(begin.line).substr(0, end);
  std::size_t const count = seen_units(view, row, line, begin.column, last_column);
  char16_t const* const units = line.data() + begin.column;

  row_text result;
  result.units.assign(units, units + count);
  result.column = view.column_in_view(from);
  result.ends_here = begin.column + count == view.storage->size(begin.line);
  add_marked_text(text_view, begin, result);
  result.pieces =
      text_cells::pieces_of(result.units, result.column, text::tab_stops(view.tab_size));
  grammar::tokenize_filter const* const tokenizer = text_view.tokenizer();
  if (tokenizer == nullptr) {
    result.spans.push_back({0, text_view.styleOfPath(0)});
    return result;
  }
  grammar::line_tokens const& tokens = tokenizer->tokens(begin.line);
  add_spans(text_view, tokens, begin, result);
  if (count == available) {
    auto const after = static_cast<std::uint32_t>(begin.column + count);
    result.background_after = text_view.styleOfPath(tokens.at(after).path).background;
  }
  return result;
}

}  // namespace layout
