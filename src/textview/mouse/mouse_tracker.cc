#include "textview/mouse/mouse_tracker.h"

#include "actions/selecting.h"
#include "layout/geometry.h"
#include "platform/desktop.h"
#include "settings/store.h"
#include "text/views/view.h"

#include <algorithm>
#include <cmath>

namespace textview {

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

text::freehanded_t::type freehanded_for(bool columns) {
  return columns ? text::freehanded_t::on : text::freehanded_t::automatic;
}

}  // namespace

bool is_option_alone(std::uint32_t modifiers) {
  return (modifiers & (modifier::option | modifier::control | modifier::command)) ==
         modifier::option;
}

mouse_tracker::mouse_tracker(pointed_view& text_view) : text_view_(text_view) {}

void mouse_tracker::take_modifiers(std::uint32_t modifiers) {
  is_option_tap_ = false;
  modifiers_ = modifiers & kept_flags;
}

void mouse_tracker::modifiers_changed(std::uint32_t modifiers) {
  std::uint32_t const flags = modifiers & kept_flags;
  std::uint32_t const old = modifiers_;
  modifiers_ = flags;
  if (text_view_.view() == nullptr || flags == old) return;
  if (is_option_alone(flags) != is_option_alone(old) && text_view_.host() != nullptr)
    text_view_.host()->reset_cursor();

  if (is_pressed_) {
    if ((flags ^ old) & modifier::option) text_view_.performNamed("toggleColumnSelection:");
    return;
  }
  bool const disabled = settings::store().boolean("DisableColumnSelectionTogglingOnOption");
  if (!disabled) toggle_columns_on_option_tap(old, flags);
}

// A quick tap of Option, without a key in between, turns a selection from lines to columns or back.
void mouse_tracker::toggle_columns_on_option_tap(std::uint32_t old, std::uint32_t flags) {
  double const now = platform::desktop::current().loop().now();
  text::selection const& selection = text_view_.view()->selection;
  if (!selection.empty() && selection.current_mark == selection.last_mark && is_option_tap_ &&
      flags == (old & ~modifier::option) && now - option_pressed_at_ < tap_time)
    text_view_.performNamed("toggleColumnSelection:");
  is_option_tap_ = (flags & ~old) == modifier::option;
  option_pressed_at_ = now;
}

void mouse_tracker::press(mouse_event const& event) {
  is_pressed_ = true;
  has_moved_ = false;
  set_position(event.position);
  pressed_at_ = event.position;
  if (event.modifiers & modifier::shift) {
    granularity_ = granularity::unit;
    text_view_.change([&] { extend_selection_to(event.position); });
    return;
  }
  if (!arm_drag(event)) select_at(event);
}

// Pressed on the selection and held a moment: then moving the mouse drags it. Moved at once it
// starts a new selection, and released it sets the caret.
bool mouse_tracker::arm_drag(mouse_event const& event) {
  platform::view_host const* const host = text_view_.host();
  if (host == nullptr || !text_view_.view()->has_selection() || event.click_count != 1)
    return false;
  std::uint32_t const held = event.modifiers & kept_flags;
  bool const is_free = held == 0 || (held == modifier::command && !host->is_window_key());
  if (!is_free || !layout::is_in_selection(text_view_, event.position)) return false;
  double const delay = settings::store().real("NSDragAndDropTextDelay") / 1000;
  arm_ = drag_arm::waiting;
  arm_timer_ = platform::desktop::current().loop().schedule(delay, false, [this] {
    arm_ = drag_arm::armed;
    if (text_view_.host() != nullptr) text_view_.host()->reset_cursor();
  });
  return true;
}

void mouse_tracker::key_pressed() {
  is_option_tap_ = has_moved_ = false;
  gesture_.cancel();
}

void mouse_tracker::disarm() {
  arm_ = drag_arm::none;
  arm_timer_.reset();
}

void mouse_tracker::forget_press() {
  disarm();
  autoscroll_timer_.reset();
  gesture_.cancel();
  is_pressed_ = false;
}

void mouse_tracker::select_at(mouse_event const& event) {
  bool const columns = (event.modifiers & modifier::option) != 0;
  bool const in_gutter = event.position.x < text_view_.visibleTextRect().x;
  granularity_ = event.click_count == 2               ? granularity::word
                 : event.click_count > 2 || in_gutter ? granularity::line
                                                      : granularity::unit;
  text_view_.change([&] {
    text::selection& selection = text_view_.view()->selection;
    selection.set_caret(layout::position_at(text_view_, event.position, freehanded_for(columns)));
    if (granularity_ == granularity::word) text_view_.performNamed("selectWord:");
    if (granularity_ == granularity::line) text_view_.performNamed("selectHardLine:");
    take_anchor();
  });
}

// The press was held back, since it might have become a drag.
void mouse_tracker::select_at_armed_press(std::uint32_t modifiers) {
  disarm();
  if (text_view_.host() != nullptr) text_view_.host()->reset_cursor();
  select_at({pressed_at_, mouse_button::left, 1, modifiers});
}

// The end that is nearer to the click moves, by lines and then by columns.
void mouse_tracker::extend_selection_to(point p) {
  text::selection& selection = text_view_.view()->selection;
  text::view_iterator const to =
      layout::position_at(text_view_, p, freehanded_for(selection.column_mode));
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
  take_anchor();
}

void mouse_tracker::drag(mouse_event const& event) {
  if (!is_pressed_) return;
  set_position(event.position);
  modifiers_ = event.modifiers & kept_flags;
  if (!has_moved_ && std::abs(event.position.x - pressed_at_.x) < 1 &&
      std::abs(event.position.y - pressed_at_.y) < 1)
    return;
  has_moved_ = true;
  if (is_drag_armed()) return text_view_.startDragForEvent({pressed_at_, mouse_button::left, 1, 0});
  if (arm_ == drag_arm::waiting) select_at_armed_press(event.modifiers);
  start_autoscroll();
  select_to_mouse();
}

void mouse_tracker::set_position(point p) {
  rect const visible = layout::visible_rect_of(text_view_);
  in_visible_ = {p.x - visible.x, p.y - visible.y};
}

point mouse_tracker::position() const {
  rect const visible = layout::visible_rect_of(text_view_);
  return {in_visible_.x + visible.x, in_visible_.y + visible.y};
}

void mouse_tracker::take_anchor() {
  anchor_ = text_view_.view()->selection;
  anchor_memento_ = text_view_.view()->storage->current_memento;
}

void mouse_tracker::select_to_mouse() {
  text_view_.change([this] { extend_to_mouse(); });
}

void mouse_tracker::extend_to_mouse() {
  bool const columns = (modifiers_ & modifier::option) != 0;
  text::view& view = *text_view_.view();
  text::selection& selection = view.selection;
  if (granularity_ == granularity::unit) {
    selection.select_to(layout::position_at(text_view_, position(), freehanded_for(columns)),
                        columns);
    return;
  }
  // The word or line under the mouse joins what the press selected; what is selected now, if the
  // text has changed under the mouse, by a key or by another program.
  if (view.storage->current_memento != anchor_memento_) take_anchor();
  selection.set_caret(layout::position_at(text_view_, position(), text::freehanded_t::off));
  granularity_ == granularity::word ? actions::select_word(&view)
                                    : actions::select_hard_line(&view);
  text::view_iterator const first = std::min(selection.first(), anchor_.first());
  text::view_iterator const last = std::max(selection.last(), anchor_.last());
  bool const backward = selection.first() < anchor_.first();
  selection.set_caret(backward ? last : first);
  selection.select_to(backward ? first : last, false);
}

void mouse_tracker::release(mouse_event const& event) {
  if (arm_ != drag_arm::none && text_view_.view() != nullptr)
    select_at_armed_press(event.modifiers);
  forget_press();
}

void mouse_tracker::start_autoscroll() {
  if (autoscroll_timer_ != nullptr || text_view_.host() == nullptr) return;
  autoscroll_timer_ = platform::desktop::current().loop().schedule(autoscroll_period, true,
                                                                   [this] { autoscroll(); });
}

// While the mouse is held outside, the view follows it, faster the farther away it is.
void mouse_tracker::autoscroll() {
  point const by = layout::distance_beyond(text_view_.visibleTextRect(), position());
  if (by == point{}) return;
  rect const whole = text_view_.host()->visible_rect();
  text_view_.host()->scroll_to({whole.x + by.x, whole.y + by.y});
  select_to_mouse();
}

}  // namespace textview
