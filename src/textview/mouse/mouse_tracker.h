#pragma once

#include "platform/event.h"
#include "platform/geometry.h"
#include "platform/run_loop.h"
#include "text/views/selection.h"
#include "textview/mouse/mouse_gesture.h"
#include "textview/mouse/pointed_view.h"

#include <cstdint>
#include <memory>

namespace textview {

/// Whether these keys, held while the mouse selects, ask for columns.
bool is_option_alone(std::uint32_t modifiers);

/// The left button from its press to its release, and the keys held with it. Pressed in the text it
/// selects by units, words or lines, and the view scrolls after the mouse; pressed on the selection
/// and held for a moment it drags that away. The right button draws gestures. Where the view shows
/// a document, all of its events come here; the view owns this. Main thread only.
class mouse_tracker {
 public:
  explicit mouse_tracker(pointed_view& text_view);

  void press(platform::mouse_event const& event);
  /// The mouse has moved. If that starts a drag, the view may be gone on return.
  void drag(platform::mouse_event const& event);
  void release(platform::mouse_event const& event);
  /// The keys held have changed.
  void modifiers_changed(std::uint32_t modifiers);
  /// A button is pressed with these keys, so that Option, if it is held, is no tap.
  void take_modifiers(std::uint32_t modifiers);
  /// A key is pressed, likewise; a drag has to move again.
  void key_pressed();

  /// Whether moving the mouse drags the selection.
  bool is_drag_armed() const { return arm_ == drag_arm::armed; }
  /// What is drawn with the right button. A key pressed meanwhile ends it.
  mouse_gesture& gesture() { return gesture_; }

  /// The press counts no more: its release goes elsewhere, or the document or the host is going.
  void forget_press();

 private:
  enum class granularity { unit, word, line };
  enum class drag_arm { none, waiting, armed };

  void toggle_columns_on_option_tap(std::uint32_t old_flags, std::uint32_t flags);
  bool arm_drag(platform::mouse_event const& event);
  void disarm();
  void select_at(platform::mouse_event const& event);
  void select_at_armed_press(std::uint32_t modifiers);
  void extend_selection_to(platform::point p);
  void take_anchor();
  void select_to_mouse();
  void extend_to_mouse();
  void set_position(platform::point p);
  platform::point position() const;
  void start_autoscroll();
  void autoscroll();

  pointed_view& text_view_;
  std::uint32_t modifiers_ = 0;
  bool is_option_tap_ = false;  ///< so far: Option was pressed, and nothing else since
  double option_pressed_at_ = 0;
  bool is_pressed_ = false;
  platform::point pressed_at_;
  platform::point in_visible_;  ///< from the corner of what is visible: the text scrolls under it
  bool has_moved_ = false;
  granularity granularity_ = granularity::unit;
  text::selection anchor_;            ///< what the press selected, for selecting by words or lines
  std::uint32_t anchor_memento_ = 0;  ///< of the text in which it did
  mouse_gesture gesture_;
  drag_arm arm_ = drag_arm::none;
  std::unique_ptr<platform::timer> autoscroll_timer_, arm_timer_;
};

}  // namespace textview
