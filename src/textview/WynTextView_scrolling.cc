#include "layout/geometry.h"
#include "platform/desktop.h"
#include "styles/view_styles.h"
#include "text/views/bookmark_filter.h"
#include "text/views/folding_filter.h"
#include "textview/WynCompletionManager.h"
#include "textview/WynTextView.h"
#include "textview/view_will_change.h"

#include <algorithm>
#include <cmath>
#include <limits>

// The frame, what of it shows, and the blinking caret.

using platform::point;
using platform::rect;

namespace {

constexpr double blink_period = 0.5;  // seconds
constexpr double frame_margin = 4;    // right of and below the text
constexpr double bookmark_width = 14, fold_width = 13;
constexpr std::size_t ellipsis_columns = 4;  // after a folded line
constexpr double min_wrap_columns = 10;

unsigned digits_of(std::size_t n) {
  unsigned digits = 1;
  for (; n >= 10; n /= 10) ++digits;
  return digits;
}

}  // namespace

void WynTextView::setupTextFrame() {
  if (host_ == nullptr) return;
  layout_.setFont({fontName_, fontSize_, antiAliasEnabled()}, *host_);
  recalcFrameSize();
}

// The gutter grows with the number of lines, two digits at least, so that it stays put while a
// small file is typed. Else it is there for what it has to show.
void WynTextView::updateGutterWidth() {
  bool const marked = !view_->bookmark_filter->marks.empty();
  double const flag = showBookmarksInGutter() && marked ? bookmarkZone() : 0;
  double columns = softWrap() && showSoftWrapInGutter() ? 1.5 : 0;
  if (lineNumbers()) columns = std::max(2u, digits_of(view_->storage->lines())) + 1.5;
  auto const& filter = *view_->folding_filter;
  bool const folds = view_->foldings_enabled && (filter.has_patterns() || !filter.foldings.empty());
  double const fold = folds ? fold_width * layout_.imageScale() : 0;
  double const width = flag + std::ceil(columns * layout_.charWidth()) + fold;
  double const old_width = layout_.gutterWidth(), old_flag = layout_.bookmarkWidth(),
               old_fold = layout_.foldWidth();
  layout_.setGutterWidth(width, flag, fold);
  if (old_width != layout_.gutterWidth() || old_flag != flag || old_fold != fold) setNeedsDisplay();
}

// The left part of the gutter: where flags are, and where a click sets the first one.
double WynTextView::bookmarkZone() const {
  return bookmark_width * layout_.imageScale();
}

// One column stays free for the unit before a cut through a long word.
unsigned WynTextView::fittingColumns() const {
  double const left = layout_.left() - layout_.gutterWidth();
  double const columns = (visibleTextRect().width - left - frame_margin) / layout_.charWidth();
  return static_cast<unsigned>(std::max(min_wrap_columns, std::floor(columns) - 1));
}

unsigned WynTextView::wrapColumns() const {
  if (rightMargin() > 0) return static_cast<unsigned>(rightMargin());
  bool const is_shown = host_ != nullptr && !host_->visible_rect().empty();
  return is_shown ? fittingColumns() : view_->screen_width;
}

// The width of the whole view: rows that reach the right margin are not cut off.
double WynTextView::frameWidth() const {
  std::size_t const after = view_->folding_filter->foldings.empty() ? 1 : ellipsis_columns;
  if (!softWrap()) return layout_.x_of_column(view_->columns() + after) + frame_margin;
  double const visible = host_->visible_rect().width;
  if (rightMargin() < 1) return visible;
  return std::max(visible, layout_.x_of_column(wrapColumns() + 1) + frame_margin);
}

// True if the lines have been wrapped again.
bool WynTextView::updateScreenWidth() {
  if (!softWrap()) return false;
  unsigned const columns = wrapColumns();
  if (columns == view_->screen_width) return false;
  view_->set_screen_width(columns);
  setNeedsDisplay();
  return true;
}

// The width goes first, and before it that of the gutter, which has marks for wrapped rows: so
// a large text is wrapped once.
void WynTextView::applySoftWrap() {
  if (view_ == nullptr) return;
  if (host_ != nullptr) updateGutterWidth();
  updateScreenWidth();
  view_->set_soft_wrap(softWrap());
}

// What stands at the top stays there when lines are wrapped again.
void WynTextView::recalcFrameSize() {
  if (host_ == nullptr || view_ == nullptr) return;
  updateGutterWidth();
  if (!isSeen()) {
    updateScreenWidth();
    return;
  }
  double const y = host_->visible_rect().y;
  std::size_t const top_row = std::min(layout_.row_at(y), view_->lines() - 1);
  text::view_iterator const top = view_->begin(top_row);
  bool const wrapped = updateScreenWidth();
  host_->set_frame_size({frameWidth(), layout_.y_of_row(view_->lines()) + frame_margin});
  if (wrapped && y > 0)
    host_->scroll_to(
        {0, y + layout_.y_of_row(view_->line_in_view(top)) - layout_.y_of_row(top_row)});
}

platform::size WynTextView::size_for(int columns, int rows) const {
  auto const column = static_cast<std::size_t>(std::max(columns, 1));
  auto const row = static_cast<std::size_t>(std::max(rows, 1));
  return {layout_.x_of_column(column) + frame_margin, layout_.y_of_row(row)};
}

void WynTextView::setNeedsDisplay() {
  if (host_ != nullptr) host_->set_needs_display(host_->visible_rect());
}

void WynTextView::setNeedsDisplayOfLines(std::size_t first, std::size_t last) {
  if (host_ == nullptr) return;
  rect const visible = host_->visible_rect();
  double const top = layout_.y_of_row(first);
  double const bottom =
      last == std::numeric_limits<std::uint32_t>::max() ? visible.bottom() : layout_.y_of_row(last);
  host_->set_needs_display(rect{visible.x, top, visible.width, bottom - top}.intersection(visible));
}

// The gutter marks the number of the caret's line, and its row may be shaded unless something is
// selected.
void WynTextView::setNeedsDisplayOfCurrentLines(rect const& old_caret, bool had_selection) {
  if (!lineNumbers() && !highlightCurrentLine()) return;
  std::size_t const row = view_->line_in_view(view_->selection.current_mark);
  // Its edge, on a device pixel, may lie a little above its row.
  double const inside = old_caret.y + old_caret.height / 2;
  std::size_t const old_row = std::min(layout_.row_at(inside), view_->lines() - 1);
  if (row == old_row && view_->has_selection() == had_selection) return;
  for (std::size_t const changed : {old_row, row}) {
    setNeedsDisplayOfLines(changed, changed + 1);
    text::iterator const begin = view_->begin(changed).base;
    if (begin.column == 0) continue;
    std::size_t const numbered =
        view_->line_in_view({view_, view_->storage->begin_of_line(begin.line)});
    setNeedsDisplayOfLines(numbered, numbered + 1);
  }
}

rect WynTextView::visibleTextRect() const {
  if (host_ == nullptr) return {};
  rect const visible = host_->visible_rect();
  double const gutter = layout_.gutterWidth();
  return {visible.x + gutter, visible.y, std::max(0.0, visible.width - gutter), visible.height};
}

void WynTextView::scrollRectToVisible(rect const& r) {
  if (host_ == nullptr) return;
  rect const visible = visibleTextRect();
  point origin{visible.x, visible.y};
  // What is larger than the visible part shows its beginning.
  if (r.right() > visible.right()) origin.x = r.right() - visible.width;
  if (r.x < origin.x) origin.x = r.x;
  if (r.bottom() > visible.bottom()) origin.y = r.bottom() - visible.height;
  if (r.y < origin.y) origin.y = r.y;
  origin.x -= layout_.gutterWidth();
  // The first column and row bring their margin along.
  if (origin.x <= layout_.left()) origin.x = 0;
  if (origin.y <= layout_.top()) origin.y = 0;
  rect const whole = host_->visible_rect();
  if (origin.x != whole.x || origin.y != whole.y) host_->scroll_to(origin);
}

void WynTextView::centerSelectionInVisibleArea() {
  if (host_ == nullptr || view_ == nullptr) return;
  rect const visible = visibleTextRect();
  rect const caret = layout::caret_rectangle(*this);
  rect target = caret;
  if (!visible.contains(caret)) {
    target.y = std::max(0.0, std::round(caret.y - (visible.height - caret.height) / 2));
    target.height = visible.height;
  }
  target.x -= 40;
  target.width += 80;
  scrollRectToVisible(target);
}

// A row at the top stands there from its first pixel on.
void WynTextView::snapshotMetaData() {
  if (view_ == nullptr || host_ == nullptr) return;
  rect const visible = visibleTextRect();
  view_->first_visible_line = static_cast<std::ptrdiff_t>(layout_.row_at(visible.y));
  view_->first_visible_column = layout_.column_at(visible.x);
}

void WynTextView::scrollToStoredPosition() {
  if (host_ == nullptr || view_ == nullptr) return;
  if (view_->first_visible_line < 0) return centerSelectionInVisibleArea();
  auto const row = static_cast<std::size_t>(view_->first_visible_line);
  host_->scroll_to({layout_.x_of_column(view_->first_visible_column) - layout_.left(),
                    row == 0 ? 0 : layout_.y_of_row(row)});
}

void WynTextView::centerSelectionNowAndLater() {
  if (host_ == nullptr) return;
  centerSelectionInVisibleArea();
  centerTimer_ = platform::desktop::current().loop().schedule(
      0, false, [this] { centerSelectionInVisibleArea(); });
}

void WynTextView::addScrollingMethods() {
  addAction("pageUp:", [this] { moveByPage(-1, false); });
  addAction("pageDown:", [this] { moveByPage(1, false); });
  addAction("pageUpAndModifySelection:", [this] { moveByPage(-1, true); });
  addAction("pageDownAndModifySelection:", [this] { moveByPage(1, true); });
  auto const add_scroll = [this](char const* selector, std::function<double()> rows) {
    addMethod(selector, [this, rows = std::move(rows)](plist::value const&) {
      if (host_ != nullptr && view_ != nullptr) scrollByRows(rows(), smoothScrolling());
      return plist::value();
    });
  };
  auto const page = [this] {
    return std::max(1.0, std::floor(visibleTextRect().height / layout_.lineHeight()) - 1);
  };
  auto const all = [this] { return static_cast<double>(view_->lines()); };
  add_scroll("scrollLineUp:", [] { return -1; });
  add_scroll("scrollLineDown:", [] { return 1; });
  add_scroll("scrollPageUp:", [page] { return -page(); });
  add_scroll("scrollPageDown:", [page] { return page(); });
  add_scroll("scrollToBeginningOfDocument:", [all] { return -all(); });
  add_scroll("scrollToEndOfDocument:", [all] { return all(); });
  addMethod("centerSelectionInVisibleArea:", [this](plist::value const&) {
    centerSelectionInVisibleArea();
    return plist::value();
  });
}

void WynTextView::scrollByRows(double rows, bool smoothly) {
  if (smoothly) return host_->glide_by({0, rows * layout_.lineHeight()});
  rect const visible = host_->visible_rect();
  host_->scroll_to({visible.x, visible.y + rows * layout_.lineHeight()});
}

// The caret keeps its column and, as far as the text allows, its place on the screen.
void WynTextView::moveByPage(int direction, bool select) {
  text::view& view = *view_;
  double const height = host_ != nullptr ? visibleTextRect().height : 24 * layout_.lineHeight();
  auto const rows =
      std::max<std::ptrdiff_t>(1, static_cast<std::ptrdiff_t>(height / layout_.lineHeight()) - 1);
  text::view_iterator const caret = view.selection.current_mark;
  std::size_t const column =
      caret.desired_column != 0 ? caret.desired_column : view.column_in_view(caret);
  auto const row = static_cast<std::ptrdiff_t>(view.line_in_view(caret)) + direction * rows;
  auto const last = static_cast<std::ptrdiff_t>(view.lines()) - 1;

  auto const type =
      view.selection.column_mode ? text::freehanded_t::on : text::freehanded_t::automatic;
  text::view_iterator target =
      row < 0      ? view.begin(0)
      : row > last ? view.end()
                   : iter_from_view_pos(&view, {static_cast<std::size_t>(row), column}, type);
  target.desired_column = static_cast<std::uint32_t>(column);
  if (select) {
    view.selection.select_to(target, view.selection.column_mode);
  } else {
    view.selection.set_caret(target);
  }
  if (host_ != nullptr) scrollByRows(static_cast<double>(direction * rows), false);
}

void WynTextView::visible_rect_changed() {
  if (host_ == nullptr) return;
  if (softWrap() && view_ != nullptr && wrapColumns() != view_->screen_width) recalcFrameSize();
  host_->input_method_changed(false);
  WynCompletionManager::sharedInstance().follow(*this);
}

void WynTextView::focus_changed() {
  caretVisible_ = true;
  styles_->drop_drawn();  // the palette may be another one
  if (host_ == nullptr) return;
  if (host_->is_first_responder() && host_->is_window_key()) {
    showCaret();
  } else {
    blinkTimer_.reset();
    forgetPendingKeys();
    WynCompletionManager::sharedInstance().closeFor(*this);
  }
  setNeedsDisplay();
}

void WynTextView::showCaret() {
  caretVisible_ = true;
  if (host_ == nullptr || !host_->is_first_responder()) return;
  host_->input_method_changed(false);
  blinkTimer_ =
      platform::desktop::current().loop().schedule(blink_period, true, [this] { blinkCaret(); });
}

void WynTextView::blinkCaret() {
  if (host_ == nullptr || view_ == nullptr) return;
  caretVisible_ = !caretVisible_;
  rect const visible = host_->visible_rect();
  host_->set_needs_display(layout::caret_rectangle(*this).intersection(visible));
  for (rect const& caret : layout::other_caret_rectangles(*this, visible))
    host_->set_needs_display(caret.intersection(visible));
}

rect WynTextView::caret_rect() const {
  return view_ != nullptr ? layout::caret_rectangle(*this) : rect{};
}
