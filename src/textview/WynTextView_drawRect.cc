#include <algorithm>
#include <mutex>

#include "grammar/tokenize_filter.h"
#include "layout/bracket_marks.h"
#include "layout/geometry.h"
#include "layout/gutter_painter.h"
#include "layout/indent_guides.h"
#include "layout/row_painter.h"
#include "layout/row_text.h"
#include "layout/word_marks.h"
#include "styles/view_colors.h"
#include "text/views/folding_filter.h"
#include "text/views/view.h"
#include "textview/WynTextView.h"

// Painting, from the background up to the caret. Only rows and columns that meet the dirty
// rectangle are looked at, whatever the length of the text or of a line.

using platform::color;
using platform::rect;

namespace {

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
    paint_ruler();
    layout::row_painter rows(g_, layout_, colors_, dirty_,
                             {text_view_.showInvisibles(), text_view_.showBlanks()});
    for (std::size_t i = 0; i < rows_.size(); ++i)
      rows.paint_backgrounds(rows_[i], first_row() + i);
    paint_current_line();
    if (text_view_.indentGuides()) paint_guides();
    paint_words();
    paint_matches();
    paint_fields();
    paint_selection();
    paint_brackets();
    if (auto const& flashed = text_view_.flashed()) fill(*flashed, colors_.flash);
    for (std::size_t i = 0; i < rows_.size(); ++i)
      rows.paint_row(rows_[i], first_row() + i, ends_line(rows_[i], first_row() + i));
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
      rows_.push_back(layout::visible_text(text_view_, {row, first == 0 ? 0 : first - 1},
                                           layout_.column_at(dirty_.right()) + 1));
  }

  void paint_gutter(rect const& gutter) {
    layout::gutter_painter(
        g_, view_, layout_, colors_, dirty_,
        {text_view_.lineNumbers(), text_view_.showSoftWrapInGutter(), shades_current_line()})
        .paint(gutter, first_row(), last_row());
  }

  // Left of the first column that is beyond the margin.
  void paint_wrap_margin() {
    if (!text_view_.showWrapMarginIndicator() || text_view_.rightMargin() < 1) return;
    double const x = layout_.x_of_column(static_cast<std::size_t>(text_view_.rightMargin()));
    if (text_view_.highlightWrapMargin())
      fill({x, dirty_.y, dirty_.right() - x, dirty_.height}, colors_.beyond_margin);
    fill({x, dirty_.y, 1, dirty_.height}, colors_.wrap_margin);
  }

  void paint_ruler() {
    if (text_view_.rulerColumn() < 1) return;
    double const x = layout_.x_of_column(static_cast<std::size_t>(text_view_.rulerColumn()));
    fill({x, dirty_.y, 1, dirty_.height}, colors_.wrap_margin);
  }

  void paint_guides() {
    layout::indent_guides guides(view_);
    std::size_t const last_column = layout_.column_at(dirty_.right()) + 1;
    for (std::size_t row = first_row(); row <= last_row(); ++row) {
      std::size_t const depth = std::min(guides.depth_of_row(row), last_column);
      for (std::size_t column = 0; column < depth; column += view_.tab_size)
        fill({layout_.x_of_column(column), layout_.y_of_row(row), 1, layout_.lineHeight()},
             colors_.guide);
    }
  }

  void paint_words() {
    for (auto const& [first, last] : text_view_.wordMarks().places())
      paint_range(first, last, colors_.same_word);
  }

  void paint_brackets() {
    auto const places = text_view_.bracketMarks().places();
    if (!places) return;
    for (text::pos const& place : {places->first, places->second}) {
      text::iterator const at(place, view_.storage);
      if (!view_.is_visible(at)) continue;
      rect const r = layout::character_rectangle(text_view_, {&view_, at});
      fill(r, colors_.bracket);
      frame(r, 1, colors_.bracket_edge);
    }
  }

  void fill(rect const& area, color c) {
    rect const shown = area.intersection(dirty_);
    if (!shown.empty()) g_.fill_rect(shown, c, c.alpha < 255);
  }

  // Within its area.
  void frame(rect const& r, double width, color c) {
    for (rect const& edge :
         {rect{r.x, r.y, r.width, width}, rect{r.x, r.bottom() - width, r.width, width},
          rect{r.x, r.y, width, r.height}, rect{r.right() - width, r.y, width, r.height}})
      fill(edge, c);
  }

  bool shades_current_line() const {
    return text_view_.highlightCurrentLine() && !view_.has_selection();
  }

  void paint_current_line() {
    if (!shades_current_line()) return;
    std::size_t const row = view_.line_in_view(view_.selection.current_mark);
    fill({dirty_.x, layout_.y_of_row(row), dirty_.width, layout_.lineHeight()},
         colors_.line_highlight);
  }

  void paint_matches() {
    for (auto const& [first, last] : text_view_.shownMatches()) {
      bool const is_current = is_selected(first, last);
      for (rect const& part : parts_of(first, last)) {
        fill(part, is_current ? colors_.current_match : colors_.match);
        if (is_current) frame(part, 2, colors_.current_match_edge);
      }
    }
  }

  // It has a colour of its own, which that of the selection would spoil.
  bool selects_match() const {
    auto const& matches = text_view_.shownMatches();
    return std::any_of(matches.begin(), matches.end(),
                       [&](auto const& each) { return is_selected(each.first, each.second); });
  }

  bool is_selected(text::iterator const& first, text::iterator const& last) const {
    return view_.selection.first().base == first && view_.selection.last().base == last;
  }

  // An empty field is a mark beside the caret.
  void paint_fields() {
    for (auto const& [first, last] : text_view_.snippetFields()) {
      paint_range(first, last, colors_.field);
      if (!(first == last)) continue;
      auto const at = layout::position_of(text_view_, text::view_iterator(&view_, first));
      fill({at.x - 1, at.y, 3, layout_.lineHeight()}, colors_.field);
    }
  }

  void paint_range(text::iterator const& first, text::iterator const& last, color c) {
    for (rect const& part : parts_of(first, last)) fill(part, c);
  }

  // A range in the rows that are drawn.
  std::vector<rect> parts_of(text::iterator const& first, text::iterator const& last) const {
    std::vector<rect> result;
    text::view_iterator const from(&view_, first), to(&view_, last);
    std::size_t const begin = view_.line_in_view(from), end = view_.line_in_view(to);
    for (std::size_t row = std::max(begin, first_row()); row <= std::min(end, last_row()); ++row) {
      double const left = layout::position_of(text_view_, row == begin ? from : view_.begin(row)).x;
      double const right = layout::position_of(text_view_, row == end ? to : view_.end(row)).x;
      result.push_back({left, layout_.y_of_row(row), right - left, layout_.lineHeight()});
    }
    return result;
  }

  void paint_selection() {
    if (view_.has_selection() && selects_match()) return;
    wyn::region const selected = layout::selection_region(text_view_, dirty_);
    for (rect const& r : selected.rects()) fill(r, colors_.selection);
  }

  bool ends_line(layout::row_text const& text, std::size_t row) const {
    return text.ends_here && view_.begin(row).base.line + std::size_t{1} < view_.storage->lines();
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
    rect const caret = layout::caret_rectangle(text_view_);
    if (caret.intersects(dirty_)) g_.fill_rect(caret, colors_.caret);
    for (rect const& other : layout::other_caret_rectangles(text_view_, dirty_))
      if (other.intersects(dirty_)) g_.fill_rect(other, colors_.caret);
  }

  WynTextView const& text_view_;
  text::view const& view_;
  TextLayout const& layout_;
  platform::graphics& g_;
  rect dirty_;
  styles::view_colors colors_;
  std::vector<layout::row_text> rows_;  // from first_row() on
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
