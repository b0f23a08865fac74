#include <algorithm>
#include <cmath>
#include <mutex>

#include "grammar/tokenize_filter.h"
#include "text/folding_filter.h"
#include "text/view.h"
#include "textview/WynTextView.h"
#include "textview/geometry.h"
#include "textview/row_text.h"
#include "textview/view_colors.h"

// Painting, from the background up to the caret. Only rows and columns that meet the dirty
// rectangle are looked at, whatever the length of the text or of a line.

using platform::color;
using platform::point;
using platform::rect;
using folding_filter = class text::view::folding_filter;
using line_type = folding_filter::line_type;

namespace {

constexpr char16_t tab_mark = 0x2023, no_break_space_mark = 0x2022, control_mark = 0x25C6;
constexpr char16_t wrap_mark = 0x21AA;
constexpr char16_t line_end_mark = 0xB7, replacement = 0xFFFD, no_break_space = 0xA0;

class painter {
 public:
  painter(WynTextView const& text_view, platform::graphics& g, rect const& dirty, bool active)
      : text_view_(text_view),
        view_(*text_view.view()),
        layout_(text_view.layout()),
        g_(g),
        dirty_(dirty),
        colors_(text_view.host()->palette(), text_view.stylesForContext({}), active) {}

  void paint() {
    g_.fill_rect(dirty_, colors_.background);
    rect const visible = text_view_.host()->visible_rect();
    paint_gutter({visible.x, visible.y, layout_.gutterWidth(), visible.height});
    rect const text_area = text_view_.visibleTextRect().intersection(dirty_);
    if (text_area.empty()) return;
    g_.push_clip(text_area);
    dirty_ = text_area;
    read_rows();
    paint_wrap_margin();
    for (std::size_t i = 0; i < rows_.size(); ++i) paint_backgrounds(rows_[i], first_row() + i);
    paint_current_line();
    paint_matches();
    paint_selection();
    if (auto const& flashed = text_view_.flashed()) fill(*flashed, colors_.flash);
    for (std::size_t i = 0; i < rows_.size(); ++i) paint_row(rows_[i], first_row() + i);
    paint_ellipses();
    paint_caret();
    g_.pop_clip();
  }

 private:
  std::size_t first_row() const { return std::min(layout_.row_at(dirty_.y), view_.lines() - 1); }
  std::size_t last_row() const {
    return std::min(layout_.row_at(dirty_.bottom()), view_.lines() - 1);
  }

  void read_rows() {
    std::size_t const first = layout_.column_at(dirty_.x);
    for (std::size_t row = first_row(); row <= last_row(); ++row)
      rows_.push_back(visible_text(text_view_, row, first == 0 ? 0 : first - 1,
                                   layout_.column_at(dirty_.right()) + 1));
  }

  void paint_gutter(rect const& gutter) {
    if (!gutter.intersects(dirty_)) return;
    g_.fill_rect(gutter.intersection(dirty_), colors_.gutter);
    std::size_t const current = view_.line_in_view(view_.selection.current_mark);
    bool const only_folds = dirty_.x >= gutter.right() - layout_.foldWidth();
    for (std::size_t row = first_row(); row <= last_row(); ++row) {
      text::iterator const begin = view_.begin(row).base;
      if (begin.column != 0) {
        if (!only_folds && text_view_.showSoftWrapInGutter()) paint_wrap_mark(gutter, row);
        continue;
      }
      if (!only_folds && layout_.bookmarkWidth() > 0 && view_.has_bookmark(begin.line))
        paint_bookmark(gutter, row);
      if (!only_folds && text_view_.lineNumbers())
        paint_line_number(gutter, row, begin.line + 1, row == current);
      if (layout_.foldWidth() > 0) paint_fold_mark(gutter, row, begin.line);
    }
  }

  void paint_fold_mark(rect const& gutter, std::size_t row, std::size_t line) {
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

  void paint_bookmark(rect const& gutter, std::size_t row) {
    double const side = 12 * layout_.imageScale();
    double const y = layout_.y_of_row(row) + std::round((layout_.lineHeight() - side) / 2);
    g_.draw_image("BookmarkFlag", {gutter.x + 1, y, side, side});
  }

  void paint_wrap_mark(rect const& gutter, std::size_t row) {
    double const x = std::round(gutter.right() - layout_.foldWidth() - 1.5 * layout_.charWidth());
    g_.draw_cluster({&wrap_mark, 1}, {x, layout_.y_of_row(row) + layout_.ascend()},
                    layout_.charWidth(), {colors_.gutter_number});
  }

  void paint_line_number(rect const& gutter, std::size_t row, std::size_t number, bool current) {
    std::string const digits = std::to_string(number);
    double const width = static_cast<double>(digits.size()) * layout_.charWidth();
    double const right = gutter.right() - layout_.foldWidth() - 0.5 * layout_.charWidth();
    double const x = std::round(right - width);
    color const c = current ? colors_.gutter_current_number : colors_.gutter_number;
    g_.draw_run(std::u16string(digits.begin(), digits.end()),
                {x, layout_.y_of_row(row) + layout_.ascend()}, layout_.charWidth(), {c});
  }

  // Left of the first column that is beyond the margin.
  void paint_wrap_margin() {
    if (!text_view_.showWrapMarginIndicator() || text_view_.rightMargin() < 1) return;
    double const x = layout_.x_of_column(static_cast<std::size_t>(text_view_.rightMargin()));
    if (text_view_.highlightWrapMargin())
      fill({x, dirty_.y, dirty_.right() - x, dirty_.height}, colors_.behind_margin);
    fill({x, dirty_.y, 1, dirty_.height}, colors_.wrap_margin);
  }

  // One rectangle for what follows each other on the same colour, so that the background of a scope
  // spans those inside. A scope that goes on in the next row fills this one to its end.
  void paint_backgrounds(row_text const& text, std::size_t row) {
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
    change(text.background_behind, layout_.x_of_column(text.column_of(text.units.size())));
    change(std::nullopt, dirty_.right());
  }

  void paint_background(std::size_t row, double left, double right, color c) {
    if (c == colors_.background) return;
    rect const area = rect{left, layout_.y_of_row(row), right - left, layout_.lineHeight()};
    fill(area, c);
  }

  void fill(rect const& area, color c) {
    rect const shown = area.intersection(dirty_);
    if (!shown.empty()) g_.fill_rect(shown, c, c.alpha < 255);
  }

  void paint_current_line() {
    if (!text_view_.highlightCurrentLine() || view_.has_selection()) return;
    std::size_t const row = view_.line_in_view(view_.selection.current_mark);
    fill({dirty_.x, layout_.y_of_row(row), dirty_.width, layout_.lineHeight()},
         colors_.line_highlight);
  }

  void paint_matches() {
    for (auto const& [first, last] : text_view_.shownMatches()) {
      text::view_iterator const from(&view_, first), to(&view_, last);
      std::size_t const begin = view_.line_in_view(from), end = view_.line_in_view(to);
      for (std::size_t row = std::max(begin, first_row()); row <= std::min(end, last_row());
           ++row) {
        double const left = row == begin ? position_of(text_view_, from).x : layout_.left();
        double const right = position_of(text_view_, row == end ? to : view_.end(row)).x;
        fill({left, layout_.y_of_row(row), right - left, layout_.lineHeight()}, colors_.match);
      }
    }
  }

  void paint_selection() {
    wyn::region const selected = selection_region(text_view_, dirty_);
    for (rect const& r : selected.rects()) fill(r, colors_.selection);
  }

  void paint_row(row_text const& text, std::size_t row) {
    double const baseline = layout_.y_of_row(row) + layout_.ascend();
    for (text_cells::piece const& piece : text.pieces) paint_piece(text, piece, baseline);
    std::size_t const line = view_.begin(row).base.line;
    if (text_view_.showInvisibles() && text.ends_here && line + 1 < view_.storage->lines())
      paint_mark(line_end_mark, text.column_of(text.units.size()), baseline);
  }

  void paint_piece(row_text const& text, text_cells::piece const& piece, double baseline) {
    std::u16string_view const units =
        std::u16string_view(text.units).substr(piece.first, piece.last - piece.first);
    platform::text_style style = text.style_at(piece.first).text;
    point const at{layout_.x_of_column(piece.column), baseline};
    switch (piece.kind) {
      case text_cells::kind::run:
        paint_run(text, piece, units, baseline);
        break;
      case text_cells::kind::cluster:
        style.underline = style.underline || text.is_marked(piece.first);
        g_.draw_cluster(units, at, static_cast<double>(piece.width) * layout_.charWidth(), style);
        break;
      case text_cells::kind::script:
        paint_script(text, piece, units, at, style);
        break;
      case text_cells::kind::tab:
        if (text_view_.showInvisibles()) paint_mark(tab_mark, piece.column, baseline);
        break;
      case text_cells::kind::control:
        if (text_view_.showInvisibles()) paint_mark(control_mark, piece.column, baseline);
        break;
      case text_cells::kind::unprinted:
        if (text_view_.showInvisibles())
          fill({at.x - 1, baseline - layout_.ascend(), 2, layout_.lineHeight()},
               colors_.invisibles);
        break;
      case text_cells::kind::surrogate:
        g_.draw_cluster({&replacement, 1}, at, layout_.charWidth(), style);
        break;
    }
  }

  // Letters that join are drawn as one.
  void paint_script(row_text const& text, text_cells::piece const& piece, std::u16string_view units,
                    point at, platform::text_style style) {
    style.underline = style.underline || text.is_marked(piece.first);
    g_.draw_cluster(units, at, static_cast<double>(piece.width) * layout_.charWidth(), style);
  }

  // Runs are cut where the style changes, where marked text begins or ends, and at invisible
  // characters that show.
  void paint_run(row_text const& text, text_cells::piece const& piece, std::u16string_view units,
                 double baseline) {
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

  bool is_shown_invisible(char16_t u) const {
    return u == no_break_space && text_view_.showInvisibles();
  }

  void paint_mark(char16_t mark, std::size_t column, double baseline) {
    g_.draw_cluster({&mark, 1}, {layout_.x_of_column(column), baseline}, layout_.charWidth(),
                    {colors_.invisibles});
  }

  void paint_ellipses() {
    if (!view_.foldings_enabled || view_.folding_filter->foldings.empty()) return;
    for (std::size_t row = first_row(); row <= last_row(); ++row)
      if (rect const mark = text_view_.foldEllipsis(row); mark.intersects(dirty_))
        g_.draw_image("Folding Ellipsis", mark);
  }

  void paint_caret() {
    auto const drop = text_view_.dropCaret();
    if (drop && drop->intersects(dirty_)) g_.fill_rect(*drop, colors_.caret);
    if (!text_view_.caretIsVisible() || !text_view_.host()->is_first_responder()) return;
    rect const caret = caret_rectangle(text_view_);
    if (caret.intersects(dirty_)) g_.fill_rect(caret, colors_.caret);
  }

  WynTextView const& text_view_;
  text::view const& view_;
  TextLayout const& layout_;
  platform::graphics& g_;
  rect dirty_;
  view_colors colors_;
  std::vector<row_text> rows_;  // from first_row() on
};

}  // namespace

void WynTextView::draw(platform::graphics& g, rect const& dirty) {
  if (host_ == nullptr) return;
  bool const active = host_->is_window_key() && host_->is_first_responder();
  if (view_ == nullptr) {
    g.fill_rect(dirty, host_->palette().background);
    return;
  }
  if (tokenizer_ != nullptr) tokenizer_->start();
  std::lock_guard const lock(view_->storage->mutex);
  painter(*this, g, dirty, active).paint();
}
