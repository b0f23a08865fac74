#include "textview/row_text.h"

#include <algorithm>

#include "grammar/tokenize_filter.h"
#include "text/view.h"
#include "textview/WynTextView.h"

namespace {

// The unit at which a row is broken belongs to none, and yet that of a long word has to be seen.
text::iterator end_of_shown(text::view const& view, std::size_t row) {
  text::iterator const end = view.end(row).base;
  if (row + 1 >= view.lines()) return end;
  text::iterator const next = view.begin(row + 1).base;
  return next.line == end.line ? next : end;
}

void add_marked_text(WynTextView const& text_view, text::pos begin, row_text& row) {
  std::u16string const& marked = text_view.markedText();
  text::iterator const caret = text_view.view()->selection.current_mark.base;
  if (marked.empty() || caret.line != begin.line || caret.column < begin.column ||
      caret.column > begin.column + row.units.size())
    return;
  row.marked_first = caret.column - begin.column;
  row.marked_last = row.marked_first + marked.size();
  row.units.insert(row.marked_first, marked);
}

// Cuts the units, which begin at a column of the line, where the grammar says that their style
// changes. Marked text has the style of what is in front of it.
void add_spans(WynTextView const& text_view, grammar::line_tokens const& tokens, text::pos begin,
               row_text& row) {
  row.spans.push_back({0, text_view.styleOfPath(tokens.at(begin.column).path)});
  std::size_t const marked = row.marked_last - row.marked_first;
  auto const behind =
      std::upper_bound(tokens.begin(), tokens.end(), begin.column,
                       [](std::size_t column, auto const& token) { return column < token.column; });
  for (auto it = behind; it != tokens.end(); ++it) {
    auto const token = *it;
    std::size_t at = token.column - begin.column;
    if (at >= row.marked_first) at += marked;
    if (at >= row.units.size()) break;
    drawn_style const& style = text_view.styleOfPath(token.path);
    if (style != row.spans.back().style) row.spans.push_back({at, style});
  }
}

}  // namespace

std::vector<row_text::span>::const_iterator row_text::span_at(std::size_t index) const {
  auto const behind =
      std::upper_bound(spans.begin(), spans.end(), index,
                       [](std::size_t at, span const& other) { return at < other.first; });
  return behind - 1;
}

std::size_t row_text::column_of(std::size_t index) const {
  auto const behind =
      std::upper_bound(pieces.begin(), pieces.end(), index,
                       [](std::size_t at, auto const& other) { return at < other.first; });
  if (behind == pieces.begin()) return column;
  text_cells::piece const& piece = *(behind - 1);
  return index < piece.last ? piece.column + (index - piece.first) : piece.column + piece.width;
}

row_text visible_text(WynTextView const& text_view, std::size_t row, std::size_t first_column,
                      std::size_t last_column) {
  text::view const& view = *text_view.view();
  auto const from = iter_from_view_pos(&view, row, first_column, text::freehanded_t::off);
  text::pos const begin = from.base.pos();
  std::size_t const available = end_of_shown(view, row).column - begin.column;
  std::size_t const wanted = last_column - first_column + 16;  // room for wide clusters at the edge
  std::size_t const count = std::min(available, wanted);
  char16_t const* const units = view.storage->begin(begin.line) + begin.column;

  row_text result;
  result.units.assign(units, units + count);
  result.column = view.column_in_view(from);
  result.ends_here = begin.column + count == view.storage->size(begin.line);
  add_marked_text(text_view, begin, result);
  result.pieces = text_cells::pieces_of(result.units, result.column, view.tab_size);
  grammar::tokenize_filter const* const tokenizer = text_view.tokenizer();
  if (tokenizer == nullptr) {
    result.spans.push_back({0, text_view.styleOfPath(0)});
    return result;
  }
  grammar::line_tokens const& tokens = tokenizer->tokens(begin.line);
  add_spans(text_view, tokens, begin, result);
  if (count == available) {
    auto const behind = static_cast<std::uint32_t>(begin.column + count);
    result.background_behind = text_view.styleOfPath(tokens.at(behind).path).background;
  }
  return result;
}
