#include <algorithm>
#include <cmath>
#include <mutex>

#include "grammar/tokenize_filter.h"
#include "text/folding_filter.h"
#include "text/view.h"
#include "textview/WynTextView.h"
#include "textview/geometry.h"
#include "textview/text_cells.h"
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

// One row of text as it is drawn: the units of the visible columns, marked text among them.
struct row_text {
  std::u16string units;
  std::size_t column = 0;                         // of the first unit
  std::size_t marked_first = 0, marked_last = 0;  // half open, indices into units
  bool ends_here = false;                         // the line's end comes right after the units
  struct span {
    std::size_t first;  // index into units
    drawn_style style;
  };
  std::vector<span> spans;  // in order, the first one at 0

  drawn_style const& style_at(std::size_t index) const { return span_at(index)->style; }
  std::size_t end_of_style(std::size_t index) const {
    auto const next = span_at(index) + 1;
    return next == spans.end() ? units.size() : next->first;
  }

 private:
  std::vector<span>::const_iterator span_at(std::size_t index) const {
    auto const behind =
        std::upper_bound(spans.begin(), spans.end(), index,
                         [](std::size_t at, span const& other) { return at < other.first; });
    return behind - 1;
  }
};

// Cuts the units, which begin at a column of the line, where the grammar says that their style
// changes. Marked text has the style of what is in front of it.
void add_spans(WynTextView const& text_view, text::pos begin, row_text& row) {
  grammar::tokenize_filter const* const tokenizer = text_view.tokenizer();
  if (tokenizer == nullptr) {
    row.spans.push_back({0, text_view.styleOfPath(0)});
    return;
  }
  grammar::line_tokens const& tokens = tokenizer->tokens(begin.line);
  row.spans.push_back({0, text_view.styleOfPath(tokens.at(begin.column).path)});
  std::size_t const marked = row.marked_last - row.marked_first;
  auto const behind =
      std::upper_bound(tokens.begin(), tokens.end(), begin.column,
                       [](std::size_t column, auto const& token) { return column < token.column; });
  for (auto it = behind; it != tokens.end(); ++it) {
    auto const token = *it;
    std::size_t at = token.column - begin.column;
    if (at > row.marked_first) at += marked;
    if (at >= row.units.size()) break;
    row.spans.push_back({at, text_view.styleOfPath(token.path)});
  }
}

// The unit at which a row is broken belongs to none, and yet that of a long word has to be seen.
text::iterator end_of_shown(text::view const& view, std::size_t row) {
  text::iterator const end = view.end(row).base;
  if (row + 1 >= view.lines()) return end;
  text::iterator const next = view.begin(row + 1).base;
  return next.line == end.line ? next : end;
}

row_text visible_text(WynTextView const& text_view, std::size_t row, std::size_t first_column,
                      std::size_t last_column) {
  text::view const& view = *text_view.view();
  auto const from = iter_from_view_pos(&view, row, first_column, text::freehanded_t::off);
  text::iterator const end = end_of_shown(view, row);
  std::size_t const available = end.column - from.base.column;
  std::size_t const wanted = last_column - first_column + 16;  // room for wide clusters at the edge
  std::size_t const count = std::min(available, wanted);
  char16_t const* const units = view.storage->begin(from.base.line) + from.base.column;

  row_text result;
  result.units.assign(units, units + count);
  result.column = view.column_in_view(from);
  result.ends_here = from.base.column + count == view.storage->size(from.base.line);
  std::u16string const& marked = text_view.markedText();
  text::iterator const caret = view.selection.current_mark.base;
  if (!marked.empty() && caret.line == from.base.line && from.base.column <= caret.column &&
      caret.column <= from.base.column + count) {
    result.marked_first = caret.column - from.base.column;
    result.marked_last = result.marked_first + marked.size();
    result.units.insert(result.marked_first, marked);
  }
  add_spans(text_view, from.base.pos(), result);
  return result;
}

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
    paint_wrap_margin();
    paint_current_line();
    paint_matches();
    paint_selection();
    if (auto const& flashed = text_view_.flashed(); flashed && flashed->intersects(dirty_))
      g_.fill_rect(flashed->intersection(dirty_), colors_.flash);
    for (std::size_t row = first_row(); row <= last_row(); ++row) paint_row(row);
    paint_ellipses();
    paint_caret();
    g_.pop_clip();
  }

 private:
  std::size_t first_row() const { return std::min(layout_.row_at(dirty_.y), view_.lines() - 1); }
  std::size_t last_row() const {
    return std::min(layout_.row_at(dirty_.bottom()), view_.lines() - 1);
  }

  void paint_gutter(rect const& gutter) {
    if (!gutter.intersects(dirty_)) return;
    g_.fill_rect(gutter.intersection(dirty_), colors_.gutter);
    std::size_t const current = view_.line_in_view(view_.selection.current_mark);
    for (std::size_t row = first_row(); row <= last_row(); ++row) {
      text::iterator const begin = view_.begin(row).base;
      if (begin.column != 0) {
        if (text_view_.showSoftWrapInGutter()) paint_wrap_mark(gutter, row);
        continue;
      }
      if (layout_.bookmarkWidth() > 0 && view_.has_bookmark(begin.line))
        paint_bookmark(gutter, row);
      if (text_view_.lineNumbers()) paint_line_number(gutter, row, begin.line + 1, row == current);
      if (layout_.foldWidth() > 0) paint_fold_mark(gutter, row, begin.line);
    }
  }

  void paint_fold_mark(rect const& gutter, std::size_t row, std::size_t line) {
    line_type const type = view_.folding_filter->folding_type(line);
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
    rect const behind = rect{x, dirty_.y, dirty_.right() - x, dirty_.height}.intersection(dirty_);
    if (text_view_.highlightWrapMargin() && !behind.empty())
      g_.fill_rect(behind, colors_.behind_margin);
    rect const line = rect{x, dirty_.y, 1, dirty_.height}.intersection(dirty_);
    if (!line.empty()) g_.fill_rect(line, colors_.wrap_margin);
  }

  void paint_current_line() {
    if (!text_view_.highlightCurrentLine() || view_.has_selection()) return;
    std::size_t const row = view_.line_in_view(view_.selection.current_mark);
    rect const line{dirty_.x, layout_.y_of_row(row), dirty_.width, layout_.lineHeight()};
    if (line.intersects(dirty_)) g_.fill_rect(line.intersection(dirty_), colors_.line_highlight);
  }

  void paint_matches() {
    for (auto const& [first, last] : text_view_.shownMatches()) {
      text::view_iterator const from(&view_, first), to(&view_, last);
      std::size_t const begin = view_.line_in_view(from), end = view_.line_in_view(to);
      for (std::size_t row = std::max(begin, first_row()); row <= std::min(end, last_row());
           ++row) {
        double const left = row == begin ? position_of(text_view_, from).x : layout_.left();
        double const right = position_of(text_view_, row == end ? to : view_.end(row)).x;
        rect const r{left, layout_.y_of_row(row), right - left, layout_.lineHeight()};
        if (r.intersects(dirty_)) g_.fill_rect(r.intersection(dirty_), colors_.match);
      }
    }
  }

  void paint_selection() {
    bool const translucent = colors_.selection.alpha < 255;
    wyn::region const selected = selection_region(text_view_, dirty_);
    for (rect const& r : selected.rects())
      if (r.intersects(dirty_))
        g_.fill_rect(r.intersection(dirty_), colors_.selection, translucent);
  }

  void paint_row(std::size_t row) {
    std::size_t const first = layout_.column_at(dirty_.x);
    row_text const text = visible_text(text_view_, row, first == 0 ? 0 : first - 1,
                                       layout_.column_at(dirty_.right()) + 1);
    double const baseline = layout_.y_of_row(row) + layout_.ascend();
    std::size_t column = text.column;
    for (auto const& piece : text_cells::pieces_of(text.units, text.column, view_.tab_size)) {
      paint_piece(text, piece, baseline);
      column = piece.column + piece.width;
    }
    if (text_view_.showInvisibles() && text.ends_here && row + 1 < view_.lines())
      paint_mark(line_end_mark, column, baseline);
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
        style.underline = style.underline || is_marked(text, piece.first);
        g_.draw_cluster(units, at, static_cast<double>(piece.width) * layout_.charWidth(), style);
        break;
      case text_cells::kind::tab:
        if (text_view_.showInvisibles()) paint_mark(tab_mark, piece.column, baseline);
        break;
      case text_cells::kind::control:
        if (text_view_.showInvisibles()) paint_mark(control_mark, piece.column, baseline);
        break;
      case text_cells::kind::surrogate:
        g_.draw_cluster({&replacement, 1}, at, layout_.charWidth(), style);
        break;
    }
  }

  // Runs are cut where the style changes, where marked text begins or ends, and at invisible
  // characters that show.
  void paint_run(row_text const& text, text_cells::piece const& piece, std::u16string_view units,
                 double baseline) {
    for (std::size_t at = 0; at < units.size();) {
      bool const marked = is_marked(text, piece.first + at);
      bool const invisible = is_shown_invisible(units[at]);
      std::size_t const style_end =
          std::min(units.size(), text.end_of_style(piece.first + at) - piece.first);
      std::size_t end = at + 1;
      while (end < style_end && is_marked(text, piece.first + end) == marked && !invisible &&
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

  static bool is_marked(row_text const& text, std::size_t index) {
    return text.marked_first <= index && index < text.marked_last;
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
};

}  // namespace

void WynTextView::draw(platform::graphics& g, rect const& dirty) {
  if (host_ == nullptr) return;
  bool const active = host_->is_window_key() && host_->is_first_responder();
  if (view_ == nullptr) {
    g.fill_rect(dirty, host_->palette().background);
    return;
  }
  std::lock_guard const lock(view_->storage->mutex);
  painter(*this, g, dirty, active).paint();
}
