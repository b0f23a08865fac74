#include "layout/row_painter.h"

#include "layout/hidden_characters.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace layout {

using platform::color;
using platform::point;
using platform::rect;

namespace {

constexpr char16_t tab_mark = 0x2023, no_break_space_mark = 0x2022, control_mark = 0x25C6;
constexpr char16_t line_end_mark = 0xAC, replacement = 0xFFFD, no_break_space = 0xA0;
constexpr char16_t space_mark = 0xB7;

}  // namespace

void row_painter::fill(rect const& area, color c) {
  rect const shown = area.intersection(clip_);
  if (!shown.empty()) g_.fill_rect(shown, c, c.alpha < 255);
}

void row_painter::paint_backgrounds(row_text const& text, std::size_t row) {
  std::optional<color> open;
  double left = 0;
  auto const change = [&](std::optional<color> const& next, double x) {
    if (next == open) return;
    if (open) paint_background(row, left, x, *open);
    open = next;
    left = x;
  };
  for (row_text::span const& span : text.spans)
    if (span.first < text.units.size())
      change(span.style.background, layout_.x_of_column(text.column_of(span.first)));
  change(text.background_after, layout_.x_of_column(text.column_of(text.units.size())));
  change(std::nullopt, clip_.right());
}

void row_painter::paint_background(std::size_t row, double left, double right, color c) {
  if (c == colors_.background) return;
  rect const area = rect{left, layout_.y_of_row(row), right - left, layout_.lineHeight()};
  fill(area, c);
}

void row_painter::paint_row(row_text const& text, std::size_t row, bool ends_line) {
  double const baseline = layout_.y_of_row(row) + layout_.ascend();
  for (text_cells::piece const& piece : text.pieces) paint_piece(text, piece, baseline);
  if ((shown_.invisibles || shown_.blanks) && ends_line)
    paint_mark(line_end_mark, text.column_of(text.units.size()), baseline);
}

void row_painter::paint_piece(row_text const& text, text_cells::piece const& piece,
                              double baseline) {
  std::u16string_view const units =
      std::u16string_view(text.units).substr(piece.first, piece.last - piece.first);
  platform::text_style style = text.style_at(piece.first).text;
  point const at{layout_.x_of_column(piece.column), baseline};
  switch (piece.kind) {
    case text_cells::kind::run:
      paint_run(text, piece, units, baseline);
      if (shown_.blanks) paint_blanks(piece, units, baseline);
      break;
    case text_cells::kind::cluster:
    case text_cells::kind::script:  // letters that join are drawn as one
      style.underline = style.underline || text.is_marked(piece.first);
      g_.draw_cluster(units, at, static_cast<double>(piece.width) * layout_.charWidth(), style);
      paint_risks(text, piece, baseline);
      break;
    case text_cells::kind::tab:
      if (shown_.invisibles || shown_.blanks) paint_mark(tab_mark, piece.column, baseline);
      break;
    case text_cells::kind::control:
      if (shown_.invisibles) paint_mark(control_mark, piece.column, baseline);
      break;
    case text_cells::kind::unprinted:
      paint_risk(at.x, baseline);
      break;
    case text_cells::kind::surrogate:
      g_.draw_cluster({&replacement, 1}, at, layout_.charWidth(), style);
      break;
  }
}

// Runs are cut where the style changes, where marked text begins or ends, and at invisible
// characters that show.
void row_painter::paint_run(row_text const& text, text_cells::piece const& piece,
                            std::u16string_view units, double baseline) {
  for (std::size_t at = 0; at < units.size();) {
    bool const marked = text.is_marked(piece.first + at);
    bool const invisible = is_shown_invisible(units[at]);
    std::size_t const style_end =
        std::min(units.size(), text.end_of_style(piece.first + at) - piece.first);
    std::size_t end = at + 1;
    while (end < style_end && text.is_marked(piece.first + end) == marked && !invisible &&
           !is_shown_invisible(units[end]))
      ++end;
    std::size_t const column = piece.column + at;
    platform::text_style style = text.style_at(piece.first + at).text;
    style.underline = style.underline || marked;
    if (invisible) {
      paint_mark(no_break_space_mark, column, baseline);
    } else {
      g_.draw_run(units.substr(at, end - at), {layout_.x_of_column(column), baseline},
                  layout_.charWidth(), style);
    }
    at = end;
  }
}

bool row_painter::is_shown_invisible(char16_t u) const {
  return u == no_break_space && shown_.invisibles;
}

// All of a run at once, over what is printed of it.
void row_painter::paint_blanks(text_cells::piece const& piece, std::u16string_view units,
                               double baseline) {
  if (units.find(u' ') == units.npos) return;
  std::u16string marks(units.size(), u' ');
  for (std::size_t at = 0; at < units.size(); ++at)
    if (units[at] == u' ') marks[at] = space_mark;
  g_.draw_run(marks, {layout_.x_of_column(piece.column), baseline}, layout_.charWidth(),
              {colors_.invisibles});
}

void row_painter::paint_risks(row_text const& text, text_cells::piece const& piece,
                              double baseline) {
  for (std::size_t at = piece.first; at < piece.last; ++at) {
    if (is_hidden_character(text.units, at))
      paint_risk(layout_.x_of_column(text.column_of(at)), baseline);
  }
}

// An upright between two short strokes, in no character's cell and unlike the caret.
void row_painter::paint_risk(double x, double baseline) {
  double const top = baseline - layout_.ascend(), height = layout_.lineHeight();
  double const serif = std::round(layout_.charWidth() / 2);
  fill({x - 1, top, 2, height}, colors_.risk);
  for (double const y : {top, top + height - 2}) fill({x - serif, y, 2 * serif, 2}, colors_.risk);
}

void row_painter::paint_mark(char16_t mark, std::size_t column, double baseline) {
  g_.draw_cluster({&mark, 1}, {layout_.x_of_column(column), baseline}, layout_.charWidth(),
                  {colors_.invisibles});
}

}  // namespace layout
