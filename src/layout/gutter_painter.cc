#include "layout/gutter_painter.h"

#include "text/views/folding_filter.h"
#include "text/views/view.h"

#include <cmath>
#include <string>

namespace layout {

using platform::color;
using platform::rect;
using line_type = text::view::folding_filter::line_type;

namespace {

constexpr char16_t wrap_mark = 0x21AA;
constexpr double number_margin = 0.75;  // columns beside line numbers

}  // namespace

void gutter_painter::paint(rect const& gutter, std::size_t first_row, std::size_t last_row) {
  if (!gutter.intersects(clip_)) return;
  g_.fill_rect(gutter.intersection(clip_), colors_.gutter);
  if (shown_.current_line) shade_current_row(gutter);
  std::size_t const current = view_.selection.current_mark.base.line;
  bool const only_folds = clip_.x >= gutter.right() - layout_.foldWidth();
  for (std::size_t row = first_row; row <= last_row; ++row) {
    text::iterator const begin = view_.begin(row).base;
    if (begin.column != 0) {
      if (!only_folds && shown_.wrap_marks) paint_wrap_mark(gutter, row);
      continue;
    }
    if (!only_folds && layout_.bookmarkWidth() > 0 && view_.has_bookmark(begin.line))
      paint_bookmark(gutter, row);
    if (!only_folds && shown_.line_numbers)
      paint_line_number(gutter, row, begin.line + 1, begin.line == current);
    if (layout_.foldWidth() > 0) paint_fold_mark(gutter, row, begin.line);
  }
}

void gutter_painter::shade_current_row(rect const& gutter) {
  std::size_t const row = view_.line_in_view(view_.selection.current_mark);
  rect const area{gutter.x, layout_.y_of_row(row), gutter.width, layout_.lineHeight()};
  rect const shown = area.intersection(clip_);
  if (!shown.empty())
    g_.fill_rect(shown, colors_.line_highlight, colors_.line_highlight.alpha < 255);
}

void gutter_painter::paint_fold_mark(rect const& gutter, std::size_t row, std::size_t line) {
  line_type const type = view_.folding_filter->mark_of(line);
  if (type == line_type::none) return;
  double const side = 11 * layout_.imageScale();
  double const x = gutter.right() - layout_.foldWidth() + (layout_.foldWidth() - side) / 2;
  double const y = layout_.y_of_row(row) + std::round((layout_.lineHeight() - side) / 2);
  g_.draw_image(type == line_type::start  ? "Folding Top Cap"
                : type == line_type::stop ? "Folding Bottom Cap"
                                          : "Folding Collapsed",
                {x, y, side, side});
}

void gutter_painter::paint_bookmark(rect const& gutter, std::size_t row) {
  double const side = 12 * layout_.imageScale();
  double const y = layout_.y_of_row(row) + std::round((layout_.lineHeight() - side) / 2);
  g_.draw_image("BookmarkFlag", {gutter.x + 1, y, side, side});
}

void gutter_painter::paint_wrap_mark(rect const& gutter, std::size_t row) {
  double const x =
      std::round(gutter.right() - layout_.foldWidth() - (1 + number_margin) * layout_.charWidth());
  g_.draw_cluster({&wrap_mark, 1}, {x, layout_.y_of_row(row) + layout_.ascend()},
                  layout_.charWidth(), {colors_.gutter_number});
}

void gutter_painter::paint_line_number(rect const& gutter, std::size_t row, std::size_t number,
                                       bool current) {
  std::string const digits = std::to_string(number);
  double const width = static_cast<double>(digits.size()) * layout_.charWidth();
  double const right = gutter.right() - layout_.foldWidth() - number_margin * layout_.charWidth();
  double const x = std::round(right - width);
  color const c = current ? colors_.gutter_current_number : colors_.gutter_number;
  g_.draw_run(std::u16string(digits.begin(), digits.end()),
              {x, layout_.y_of_row(row) + layout_.ascend()}, layout_.charWidth(), {c});
}

}  // namespace layout
