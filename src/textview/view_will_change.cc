#include "textview/view_will_change.h"

#include "layout/geometry.h"
#include "layout/indent_guides.h"
#include "search/WynFindManager.h"
#include "styles/symbol_list.h"
#include "text/views/view.h"
#include "text/views/view_filter.h"
#include "textview/WynCompletionManager.h"
#include "textview/WynTextView.h"
#include "textview/access/text_access.h"

#include <algorithm>
#include <limits>

namespace textview {

using platform::rect;

namespace {

constexpr auto no_line = std::numeric_limits<std::uint32_t>::max();

// The part of a column selection that should stay in sight: its moving corner.
rect corner_of_columns(WynTextView const& text_view) {
  text::view const& view = *text_view.view();
  text::box const box(&view);
  std::size_t const line = box.reversed_lines ? box.first_line : box.last_line - 1;
  std::size_t const column = box.reversed_columns ? box.first_column : box.last_column;
  auto const corner = iter_from_hybrid_pos(&view, {line, column}, text::freehanded_t::on);
  platform::point const at = layout::position_of(text_view, corner);
  return {at.x, at.y, 1, text_view.layout().lineHeight()};
}

}  // namespace

view_will_change::view_will_change(WynTextView& tv, bool grouped)
    : text_view(tv),
      document(tv.document()),
      begun_in(*tv.view()),
      is_seen(tv.isSeen()),
      had_selection(tv.view()->has_selection()),
      group(grouped) {
  text::view& view = *text_view.view();
  if (is_seen) {
    old_region = layout::selection_region(tv, layout::visible_rect_of(tv));
    old_caret = layout::caret_rectangle(tv);
    guided_line = view.selection.current_mark.base.line;
    outline = layout::indent_guides::outline_of(view, guided_line);
    other_carets = layout::other_caret_rectangles(tv, layout::visible_rect_of(tv));
  }
  if (group) view.storage->undo_manager.begin_group();
  if (++text_view.viewChangeNesting_ == 1) {
    lines = view.lines();
    columns = shown_columns();
    memento = view.storage->current_memento;
    view.saved_selection = view.selection.without_text();
    view.saved_selection_pending = true;
    view.will_begin_action();
  }
}

// Measuring lines for a hidden frame would take longer than what is done to them.
std::size_t view_will_change::shown_columns() const {
  return is_seen ? text_view.view()->columns() : 0;
}

view_will_change::~view_will_change() {
  text::view& view = begun_in;
  if (group) view.storage->undo_manager.end_group();
  if (text_view.view() != &view) {
    if (--text_view.viewChangeNesting_ == 0) view.did_end_action();
    return;
  }

  bool const center = is_seen && view.center_selection_pending && selection_is_out_of_sight();
  view.center_selection_pending = false;
  bool const outermost = --text_view.viewChangeNesting_ == 0;
  if (outermost) end_outermost();
  if (outermost && text_view.access_ != nullptr) text_view.access_->tell();
  if (is_seen) show_outcome(center, outermost);
  drop_left_ranges();
  if (!outermost) return;
  text_view.publishSnippetField();
  view.did_end_action();
  view.first_refresh_line = no_line;
  view.last_refresh_line = 0;
  view.scroll_caret_pending = false;
}

// Has what has changed drawn again, scrolls the caret into sight, and publishes where it is.
void view_will_change::show_outcome(bool center, bool outermost) {
  text::view& view = *text_view.view();
  mark_refreshed_lines();
  bool const moved = !(view.selection == view.saved_selection);
  bool const changed = outermost && view.storage->current_memento != memento;
  if (moved || !(layout::caret_rectangle(text_view) == old_caret)) {
    mark_moved_selection();
    if (!center) scroll_to_selection();
  }
  text_view.publishPosition();
  if (!outermost) return;
  if (has_stepped_right()) text_view.flashPartner();
  text_view.followMarks();
  if (moved || changed) {
    text_view.showCaret();
    text_view.selectionDidChange();
    if (text_view.accessObserver_ != nullptr) text_view.accessObserver_->caret_moved();
  }
  if (center) text_view.centerSelectionNowAndLater();
  if (view.scroll_caret_pending) text_view.scrollRectToVisible(layout::caret_rectangle(text_view));
  text_view.symbols_->update(false);
  WynFindManager::sharedInstance().viewDidChange(text_view);
  WynCompletionManager::sharedInstance().follow(text_view);
}

// Stores the selection for redo, unfolds what the caret went into, and adapts the frame.
void view_will_change::end_outermost() {
  text::view& view = *text_view.view();
  if (!view.saved_selection_pending)
    view.view_filter->selections.store(
        {view.storage->previous_memento, view.storage->current_memento}, view.selection);
  view.saved_selection_pending = false;
  view.show_selection();
  if (lines != view.lines() || columns != shown_columns()) text_view.recalcFrameSize();
}

bool view_will_change::selection_is_out_of_sight() const {
  rect const visible = text_view.visibleTextRect();
  rect const caret = layout::caret_rectangle(text_view);
  if (!visible.contains(caret)) return true;
  // A region cut to the visible part cannot tell that more lies outside: look at both ends.
  text::selection const& selection = text_view.view()->selection;
  double const height = text_view.layout().lineHeight();
  for (auto const& end : {selection.first(), selection.last()}) {
    platform::point const at = layout::position_of(text_view, end);
    if (!visible.contains(rect{at.x, at.y, 1, height})) return true;
  }
  return false;
}

// As typing one unit moves the caret.
bool view_will_change::has_stepped_right() const {
  text::view const& view = *text_view.view();
  text::iterator const caret = view.selection.current_mark.base;
  text::iterator const old = view.saved_selection.current_mark.base;
  return !had_selection && !view.has_selection() && caret.line == old.line &&
         caret.column == old.column + 1;
}

void view_will_change::mark_refreshed_lines() {
  text::view const& view = *text_view.view();
  if (view.first_refresh_line >= view.last_refresh_line) return;
  text_view.setNeedsDisplayOfLines(view.first_refresh_line, view.last_refresh_line);
  if (text_view.indentGuides()) mark_guides();
  // A block that begins or ends no more changes the marks of other lines.
  TextLayout const& layout = text_view.layout();
  rect const visible = layout::visible_rect_of(text_view);
  double const x = visible.x + layout.gutterWidth() - layout.foldWidth();
  if (layout.foldWidth() > 0 && text_view.host() != nullptr)
    text_view.host()->set_needs_display({x, visible.y, layout.foldWidth(), visible.height});
}

// The guides of blank lines depend on the lines around them.
void view_will_change::mark_guides() {
  text::view const& view = *text_view.view();
  std::size_t const last_row = view.lines() - 1;
  std::size_t const first = std::min<std::size_t>(view.first_refresh_line, last_row);
  std::size_t const last = std::min<std::size_t>(view.last_refresh_line - 1, last_row);
  std::size_t const first_line = view.begin(first).base.line,
                    last_line = view.begin(last).base.line;
  bool const is_edited_line = first_line == guided_line && last_line == guided_line;
  if (is_edited_line && lines == view.lines() &&
      outline == layout::indent_guides::outline_of(view, guided_line))
    return;
  auto const [from, to] =
      layout::indent_guides::affected_lines(*view.storage, first_line, last_line + 1);
  auto const row_of = [&](std::size_t line) {
    return view.line_in_view({&view, view.storage->begin_of_line(line)});
  };
  if (from < first_line) text_view.setNeedsDisplayOfLines(row_of(from), first);
  if (to > last_line + 1) text_view.setNeedsDisplayOfLines(last + 1, row_of(to - 1) + 1);
}

void view_will_change::mark_moved_selection() {
  platform::view_host* const host = text_view.host();
  if (host == nullptr) return;
  rect const visible = host->visible_rect();
  wyn::region const fresh = layout::selection_region(text_view, visible);
  for (rect const& r : fresh.exclusive_or(old_region).rects())
    host->set_needs_display(r.intersection(visible));
  auto carets = layout::other_caret_rectangles(text_view, visible);
  carets.insert(carets.end(), {old_caret, layout::caret_rectangle(text_view)});
  carets.insert(carets.end(), other_carets.begin(), other_carets.end());
  for (rect const& caret : carets) {
    rect const around = {caret.x - 4, caret.y, caret.width + 8, caret.height};
    host->set_needs_display(around.intersection(visible));
  }
  text_view.setNeedsDisplayOfCurrentLines(old_caret, had_selection);
}

void view_will_change::scroll_to_selection() {
  text::view const& view = *text_view.view();
  rect r = view.has_selection() && view.selection.column_mode ? corner_of_columns(text_view)
                                                              : layout::caret_rectangle(text_view);
  r.x -= 40;
  r.width += 80;
  text_view.scrollRectToVisible(r);
}

// Typing is repeated in mirrors, and pairs stay alive, only while the caret stays in their source.
void view_will_change::drop_left_ranges() {
  text::view& view = *text_view.view();
  auto const is_left = [&](text::iterator_observer::subset const& range) {
    text::selection const& s = view.selection;
    return !(inside(s.current_mark.base, range) && inside(s.first_mark.base, range) &&
             inside(s.last_mark.base, range));
  };
  auto& mirrors = view.mirror_observer.mirrors;
  if (std::any_of(mirrors.begin(), mirrors.end(), [&](auto const& m) { return is_left(m.first); }))
    view.mirror_observer.remove_all_mirrors();
  auto& notifications = view.notify_observer.notifications;
  for (auto it = notifications.begin(); it != notifications.end();) {
    auto const next = std::next(it);
    if (is_left(*it)) view.notify_observer.remove_notify(it);
    it = next;
  }
}

}  // namespace textview
