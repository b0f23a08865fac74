#include "actions/selecting.h"
#include "platform/desktop.h"
#include "platform/user_defaults.h"
#include "platform/utf.h"
#include "text/view.h"
#include "textview/WynTextView.h"
#include "textview/geometry.h"
#include "textview/view_will_change.h"

#include <algorithm>
#include <cmath>

// The mouse, and the keys held with it.

using platform::mouse_button;
using platform::mouse_event;
using platform::point;
using platform::rect;

namespace {

namespace modifier = platform::modifier;

constexpr std::uint32_t kept_flags =
    modifier::shift | modifier::control | modifier::option | modifier::command;
constexpr double tap_time = 0.18;           // seconds
constexpr double autoscroll_period = 0.05;  // seconds
constexpr double primary_delay = 0.1;       // seconds after the selection last changed

bool is_option_alone(std::uint32_t flags) {
  return (flags & (modifier::option | modifier::control | modifier::command)) == modifier::option;
}

text::freehanded_t::type freehanded_for(bool columns) {
  return columns ? text::freehanded_t::on : text::freehanded_t::automatic;
}

}  // namespace

void WynTextView::modifiers_changed(std::uint32_t modifiers) {
  std::uint32_t const flags = modifiers & kept_flags;
  std::uint32_t const old = lastModifierFlags_;
  lastModifierFlags_ = flags;
  if (view_ == nullptr || flags == old) return;
  if (is_option_alone(flags) != is_option_alone(old) && host_ != nullptr) host_->reset_cursor();

  if (leftMouseDown_) {
    if ((flags ^ old) & modifier::option) performSelectorWithObject("toggleColumnSelection:", {});
    return;
  }
  bool const disabled =
      platform::user_defaults::standard().boolean("DisableColumnSelectionTogglingOnOption");
  if (!disabled) toggleColumnsOnOptionTap(old, flags);
}

// A quick tap of Option, without a key in between, turns a selection from lines to columns or back.
void WynTextView::toggleColumnsOnOptionTap(std::uint32_t old, std::uint32_t flags) {
  double const now = platform::desktop::current().loop().now();
  text::selection const& selection = view_->selection;
  if (!selection.empty() && selection.current_mark == selection.last_mark && didPressOption_ &&
      flags == (old & ~modifier::option) && now - didPressOptionAt_ < tap_time)
    performSelectorWithObject("toggleColumnSelection:", {});
  didPressOption_ = (flags & ~old) == modifier::option;
  didPressOptionAt_ = now;
}

platform::cursor WynTextView::cursor_at(point p, std::uint32_t modifiers) const {
  if (host_ != nullptr && p.x < host_->visible_rect().x + layout_.gutterWidth())
    return platform::cursor::arrow;
  if (dragArm_ == drag_arm::armed) return platform::cursor::arrow;
  if (view_ != nullptr && rowOfEllipsisAt(p)) return platform::cursor::arrow;
  return is_option_alone(modifiers) ? platform::cursor::cross : platform::cursor::text;
}

void WynTextView::mouse_down(mouse_event const& event) {
  closeIncrementalSearchWindow();
  showFindNote("");
  if (view_ == nullptr) return;
  abandonMarkedText();
  didPressOption_ = false;
  lastModifierFlags_ = event.modifiers & kept_flags;
  if (event.button == mouse_button::middle) {
    pastePrimarySelectionAt(event.position);
    return;
  }
  if (event.button == mouse_button::right) {
    showContextMenu(event.position);
    return;
  }
  if (toggleBookmarkAtClick(event.position) || toggleFoldingAtClick(event)) return;
  leftMouseDown_ = true;
  mouseHasMoved_ = false;
  setMousePosition(event.position);
  mouseDownAt_ = event.position;
  if (event.modifiers & modifier::shift) {
    dragGranularity_ = granularity::unit;
    view_will_change const scope(*this, true);
    extendSelectionTo(event.position);
    return;
  }
  if (!armDragAtClick(event)) selectAtClick(event);
}

void WynTextView::selectAtClick(mouse_event const& event) {
  bool const columns = (event.modifiers & modifier::option) != 0;
  bool const in_gutter = event.position.x < visibleTextRect().x;
  dragGranularity_ = event.click_count == 2               ? granularity::word
                     : event.click_count > 2 || in_gutter ? granularity::line
                                                          : granularity::unit;
  view_will_change const scope(*this, true);
  view_->selection.set_caret(position_at(*this, event.position, freehanded_for(columns)));
  if (dragGranularity_ == granularity::word) performSelectorWithObject("selectWord:", {});
  if (dragGranularity_ == granularity::line) performSelectorWithObject("selectHardLine:", {});
  dragAnchor_ = view_->selection;
}

// The end that is nearer to the click moves, by lines and then by columns.
void WynTextView::extendSelectionTo(point p) {
  text::selection& selection = view_->selection;
  text::view_iterator const to = position_at(*this, p, freehanded_for(selection.column_mode));
  if (!selection.empty()) {
    text::view_iterator const first = selection.first(), last = selection.last();
    auto const distance = [&](text::view_iterator const& end) {
      auto const lines = std::abs(static_cast<double>(line_before_filters(end)) -
                                  static_cast<double>(line_before_filters(to)));
      auto const columns = std::abs(static_cast<double>(column_before_wrap(end)) -
                                    static_cast<double>(column_before_wrap(to)));
      return std::pair(lines, columns);
    };
    selection.first_mark = distance(first) < distance(last) ? last : first;
  } else {
    selection.first_mark = selection.current_mark;
  }
  selection.select_to(to, selection.column_mode);
  dragAnchor_ = selection;
}

void WynTextView::mouse_dragged(mouse_event const& event) {
  if (view_ == nullptr || !leftMouseDown_) return;
  setMousePosition(event.position);
  lastModifierFlags_ = event.modifiers & kept_flags;
  if (!mouseHasMoved_ && std::abs(event.position.x - mouseDownAt_.x) < 1 &&
      std::abs(event.position.y - mouseDownAt_.y) < 1)
    return;
  mouseHasMoved_ = true;
  if (dragArm_ == drag_arm::armed)
    return startDragForEvent({mouseDownAt_, mouse_button::left, 1, 0});
  if (dragArm_ == drag_arm::waiting) selectAtArmedClick(event.modifiers);
  startAutoscroll();
  selectToMouse();
}

void WynTextView::setMousePosition(point p) {
  rect const visible = host_ != nullptr ? host_->visible_rect() : rect{};
  mouseInVisible_ = {p.x - visible.x, p.y - visible.y};
}

point WynTextView::mousePosition() const {
  rect const visible = host_ != nullptr ? host_->visible_rect() : rect{};
  return {mouseInVisible_.x + visible.x, mouseInVisible_.y + visible.y};
}

void WynTextView::selectToMouse() {
  point const mouse = mousePosition();
  bool const columns = (lastModifierFlags_ & modifier::option) != 0;
  view_will_change const scope(*this, true);
  text::selection& selection = view_->selection;
  if (dragGranularity_ == granularity::unit) {
    selection.select_to(position_at(*this, mouse, freehanded_for(columns)), columns);
    return;
  }
  // The word or line under the mouse joins what the click selected.
  selection.set_caret(position_at(*this, mouse, text::freehanded_t::off));
  dragGranularity_ == granularity::word ? select_word(view_) : select_hard_line(view_);
  text::view_iterator const first = std::min(selection.first(), dragAnchor_.first());
  text::view_iterator const last = std::max(selection.last(), dragAnchor_.last());
  bool const backward = selection.first() < dragAnchor_.first();
  selection.set_caret(backward ? last : first);
  selection.select_to(backward ? first : last, false);
}

// The click was held back, since it might have become a drag.
void WynTextView::selectAtArmedClick(std::uint32_t modifiers) {
  disarmDrag();
  if (host_ != nullptr) host_->reset_cursor();
  selectAtClick({mouseDownAt_, mouse_button::left, 1, modifiers});
}

void WynTextView::mouse_up(mouse_event const& event) {
  if (dragArm_ != drag_arm::none && view_ != nullptr) selectAtArmedClick(event.modifiers);
  autoscrollTimer_.reset();
  leftMouseDown_ = false;
}

void WynTextView::startAutoscroll() {
  if (autoscrollTimer_ != nullptr || host_ == nullptr) return;
  autoscrollTimer_ = platform::desktop::current().loop().schedule(
      autoscroll_period, true, [this] { autoscrollTimerFired(); });
}

// While the mouse is held outside, the view follows it, faster the farther away it is.
void WynTextView::autoscrollTimerFired() {
  rect const visible = visibleTextRect();
  point const mouse = mousePosition();
  auto const beyond = [](double at, double first, double last) {
    return at < first ? at - first : at > last ? at - last : 0;
  };
  double const dx = beyond(mouse.x, visible.x, visible.right());
  double const dy = beyond(mouse.y, visible.y, visible.bottom());
  if (dx == 0 && dy == 0) return;
  rect const whole = host_->visible_rect();
  host_->scroll_to({whole.x + dx, whole.y + dy});
  selectToMouse();
}

void WynTextView::pastePrimarySelectionAt(point p) {
  plist::value const text =
      platform::desktop::current().primary_selection().get(platform::pasteboard_type::text);
  if (text.as_string() == nullptr) return;
  {
    view_will_change const scope(*this, true);
    view_->selection.set_caret(position_at(*this, p, text::freehanded_t::automatic));
  }
  insertText(unicode::to_utf16(*text.as_string()));
}

// What is selected can be pasted elsewhere with the middle button. Copied a moment after the last
// change, so that selecting a large text step by step stays quick.
void WynTextView::selectionDidChange() {
  if (host_ == nullptr || !view_->has_selection()) return;
  primaryTimer_ = platform::desktop::current().loop().schedule(
      primary_delay, false, [this] { publishPrimarySelection(); });
}

void WynTextView::publishPrimarySelection() {
  if (view_ == nullptr || !view_->has_selection()) return;
  platform::desktop::current().primary_selection().set(
      {{std::string(platform::pasteboard_type::text), unicode::to_utf8(selected_text())}});
}

void WynTextView::showContextMenu(point p) {
  if (host_ == nullptr) return;
  text::selection const& selection = view_->selection;
  if (selection.empty() || !selection_region(*this, host_->visible_rect()).contains(p)) {
    view_will_change const scope(*this, true);
    view_->selection.set_caret(position_at(*this, p, text::freehanded_t::automatic));
  }
  host_->show_context_menu(contextMenu_, p);
}
