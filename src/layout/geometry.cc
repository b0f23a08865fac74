#include "layout/geometry.h"

#include "layout/laid_out_view.h"
#include "text/cell_width.h"
#include "text/views/view.h"

#include <algorithm>
#include <utility>

namespace layout {

using platform::point;
using platform::rect;

namespace {

// The rows that `limits` shows, and one more at each side.
struct row_range {
  std::size_t first, last;  // closed
  row_range(TextLayout const& layout, rect const& limits, std::size_t rows) {
    std::size_t const top = layout.row_at(limits.y);
    first = std::min(top == 0 ? 0 : top - 1, rows - 1);
    last = std::min(layout.row_at(limits.bottom()) + 1, rows - 1);
  }
};

rect row_part(TextLayout const& layout, std::size_t row, double left, double right) {
  return {left, layout.y_of_row(row), right - left, layout.lineHeight()};
}

// Full rows between the ends; the part after the text of a row is selected with its line end.
wyn::region stream_region(laid_out_view const& text_view, rect const& limits) {
  text::view const& view = *text_view.view();
  TextLayout const& layout = text_view.layout();
  text::view_iterator const first = view.selection.first(), last = view.selection.last();
  std::size_t const first_row = view.line_in_view(first), last_row = view.line_in_view(last);
  row_range const shown(layout, limits, view.lines());
  double const left = layout.left(), far_right = std::max(limits.right(), left);

  wyn::region result;
  for (std::size_t row = std::max(first_row, shown.first); row <= std::min(last_row, shown.last);
       ++row) {
    double const from = row == first_row ? position_of(text_view, first).x : left;
    double const to = row == last_row ? position_of(text_view, last).x : far_right;
    result.add(row_part(layout, row, from, to));
  }
  return result;
}

wyn::region column_region(laid_out_view const& text_view, rect const& limits) {
  text::view const& view = *text_view.view();
  TextLayout const& layout = text_view.layout();
  text::box const box(&view);
  row_range const shown(layout, limits, view.lines());

  wyn::region result;
  std::size_t const first_line =
      std::max<std::size_t>(box.first_line, view.begin(shown.first).base.line);
  std::size_t const last_line =
      std::min<std::size_t>(box.last_line, view.begin(shown.last).base.line + 1);
  for (std::size_t line = first_line; line < last_line; ++line) {
    auto const on = text::freehanded_t::on;
    point const a =
        position_of(text_view, iter_from_hybrid_pos(&view, {line, box.first_column}, on));
    point const b =
        position_of(text_view, iter_from_hybrid_pos(&view, {line, box.last_column}, on));
    std::size_t const first_row = layout.row_at(a.y), last_row = layout.row_at(b.y);
    std::size_t const last_shown = std::min(last_row, shown.last);
    for (std::size_t row = std::max(first_row, shown.first); row <= last_shown; ++row)
      result.add(row_part(layout, row, row == first_row ? a.x : layout.left(),
                          row == last_row ? b.x : std::max(limits.right(), layout.left())));
  }
  return result;
}

text::unit_view line_of(text::view_iterator const& it) {
  return it.view->storage->line_units(it.base.line);
}

text::view_iterator after_character(text::view_iterator it) {
  it.base.column = static_cast<std::uint32_t>(text::next_cluster(line_of(it), it.base.column));
  return it;
}

// Whether the position is before a character of several cells, and `x` nearer to its right edge.
bool right_half_begins_before(laid_out_view const& text_view, text::view_iterator const& it,
                              double x) {
  text::unit_view const line = line_of(it);
  std::size_t const unit = it.base.column;
  if (it.offset != 0 || unit == line.size() || line[unit] == u'\t') return false;
  if (it == it.view->end(it.view->line_in_view(it))) return false;
  double const cells = static_cast<double>(text::measure_cluster(line, unit).cells);
  double const width = cells * text_view.layout().charWidth();
  return cells > 1 && x >= position_of(text_view, it).x + width / 2;
}

rect caret_at(laid_out_view const& text_view, point at) {
  TextLayout const& layout = text_view.layout();
  if (text_view.overwriteMode())
    return {at.x, at.y + layout.lineHeight() - 1, layout.charWidth(), 1};
  return {at.x, at.y, 1, layout.lineHeight()};
}

// Half open, one more at each side than `limits` shows.
std::pair<std::size_t, std::size_t> shown_lines(laid_out_view const& text_view,
                                                rect const& limits) {
  text::view const& view = *text_view.view();
  row_range const shown(text_view.layout(), limits, view.lines());
  return {view.begin(shown.first).base.line, view.begin(shown.last).base.line + std::size_t{1}};
}

// Where else goes what is typed at the caret. Mirrors stand in the order of their lines.
std::vector<rect> mirrored_carets(laid_out_view const& text_view, rect const& limits) {
  text::view const& view = *text_view.view();
  auto const& mirrors = view.mirror_observer.mirrors;
  if (mirrors.empty()) return {};
  text::iterator const caret = view.selection.current_mark.base;
  auto const [first, last] = shown_lines(text_view, limits);
  auto const begin = std::lower_bound(
      mirrors.begin(), mirrors.end(), first,
      [](auto const& mirror, std::size_t line) { return mirror.second.first_line < line; });
  std::vector<rect> result;
  for (auto it = begin; it != mirrors.end() && it->second.first_line < last; ++it) {
    auto const& [source, copy] = *it;
    if (!inside(caret, source) || caret.line != source.first_line) continue;
    std::size_t const column = copy.first_column + (caret.column - source.first_column);
    if (column > view.storage->size(copy.first_line)) continue;
    text::iterator const at(copy.first_line, column, view.storage);
    if (view.is_visible(at))
      result.push_back(caret_at(text_view, position_of(text_view, {&view, at})));
  }
  return result;
}

}  // namespace

point position_of(laid_out_view const& text_view, text::view_iterator const& it) {
  text::view const& view = *text_view.view();
  TextLayout const& layout = text_view.layout();
  return {layout.x_of_column(view.column_in_view(it)), layout.y_of_row(view.line_in_view(it))};
}

text::view_iterator marked_text_place(text::view const& view) {
  text::selection const& selection = view.selection;
  if (selection.empty()) return selection.current_mark;
  if (!selection.column_mode) return selection.last();
  return iter_from_hybrid_pos(
      &view, {line_before_filters(selection.current_mark), text::box(selection).last_column},
      text::freehanded_t::automatic);
}

rect caret_rectangle(laid_out_view const& text_view) {
  bool const composes = !text_view.markedText().empty();
  text::view const& view = *text_view.view();
  point const at =
      position_of(text_view, composes ? marked_text_place(view) : view.selection.current_mark);
  double const x = at.x + text_view.markedTextOffset();
  return caret_at(text_view, {x, at.y});
}

std::vector<rect> other_caret_rectangles(laid_out_view const& text_view, rect const& limits) {
  text::view const& view = *text_view.view();
  if (view.selection.empty()) return mirrored_carets(text_view, limits);
  if (!view.selection.column_mode) return {};
  text::box const box(&view);
  std::size_t const column = box.reversed_columns ? box.first_column : box.last_column;
  auto const [first, last] = shown_lines(text_view, limits);
  std::vector<rect> result;
  for (std::size_t line = std::max(box.first_line, first); line < std::min(box.last_line, last);
       ++line) {
    if (line == view.selection.current_mark.base.line || !view.is_visible({line, 0, view.storage}))
      continue;
    auto const at = iter_from_hybrid_pos(&view, {line, column}, text::freehanded_t::on);
    result.push_back(caret_at(text_view, position_of(text_view, at)));
  }
  return result;
}

rect character_rectangle(laid_out_view const& text_view, text::view_iterator const& it) {
  TextLayout const& layout = text_view.layout();
  std::size_t const column = it.view->column_in_view(it);
  std::size_t const cells = text::measure_cluster(line_of(it), it.base.column).cells;
  double const left = layout.x_of_column(column), right = layout.x_of_column(column + cells);
  return {left, layout.y_of_row(it.view->line_in_view(it)), right - left, layout.lineHeight()};
}

wyn::region selection_region(laid_out_view const& text_view, rect const& limits) {
  text::view const& view = *text_view.view();
  if (view.selection.empty()) return {};
  return view.selection.column_mode ? column_region(text_view, limits)
                                    : stream_region(text_view, limits);
}

text::view_iterator position_at(laid_out_view const& text_view, point p,
                                text::freehanded_t::type type) {
  text::view const& view = *text_view.view();
  TextLayout const& layout = text_view.layout();
  std::size_t const row = layout.row_at(p.y);
  if (row >= view.lines() && type != text::freehanded_t::on) return view.end();
  text::view_iterator const at = iter_from_view_pos(&view, {row, layout.nearest_column(p.x)}, type);
  return right_half_begins_before(text_view, at, p.x) ? after_character(at) : at;
}

rect visible_rect_of(laid_out_view const& text_view) {
  return text_view.host() != nullptr ? text_view.host()->visible_rect() : rect{};
}

bool is_in_selection(laid_out_view const& text_view, point p) {
  return text_view.visibleTextRect().contains(p) &&
         selection_region(text_view, text_view.host()->visible_rect()).contains(p);
}

point distance_beyond(rect const& r, point p) {
  auto const beyond = [](double at, double first, double last) {
    return at < first ? at - first : at > last ? at - last : 0;
  };
  return {beyond(p.x, r.x, r.right()), beyond(p.y, r.y, r.bottom())};
}

}  // namespace layout
