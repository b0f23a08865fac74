#pragma once

#include "platform/accessible_text.h"
#include "platform/completion_list.h"
#include "platform/dragging.h"
#include "platform/event.h"
#include "platform/geometry.h"
#include "platform/graphics.h"
#include "platform/menu.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The two halves of an editing view: its logic, which knows no widget, and the widget that shows
/// it, which knows no text. Coordinates are those of the whole view, of which only visible_rect()
/// shows. Main thread only.
namespace platform {

enum class cursor { arrow, text, cross };

/// Colours that the desktop gives to text views. Changes when its theme does.
struct palette {
  color foreground, background, selection, caret;
  bool dark = false;
};

/// The tool tip for the place under a resting mouse pointer, as long as it stays in `area`.
struct tool_tip {
  std::u16string text;  // lines of fixed-pitch text
  rect area;
};

/// The text of the caret's line, or of a long one the part around the caret, and where in it, as
/// numbers of units, the caret is and the selection begins; that end of it which is nearer where
/// the selection begins elsewhere.
struct caret_context {
  std::u16string text;
  std::size_t caret = 0, anchor = 0;
};

/// What the logic may ask of the widget.
class view_host {
 public:
  virtual ~view_host() = default;

  virtual rect visible_rect() const = 0;
  /// Scrolls so that `origin` is the top left of the visible part, kept within the frame.
  virtual void scroll_to(point origin) = 0;
  /// Scrolls on from where it is, or is about to be, and may take a moment for it; scroll_to() ends
  /// that.
  virtual void glide_by(point distance) {
    rect const visible = visible_rect();
    scroll_to({visible.x + distance.x, visible.y + distance.y});
  }
  /// The size of the whole view; scroll bars follow.
  virtual void set_frame_size(size s) = 0;
  virtual void set_needs_display(rect const& r) = 0;
  /// Asks for scroll_ticks() again.
  virtual void set_ticks_need_display() {}

  /// False for views that are never visible, as in batch mode: then what there is to see needn't
  /// follow each action, such as the scroll position.
  virtual bool is_seen() const { return true; }
  /// That of platform::window::number(); 0 for a view in none.
  virtual std::uint32_t window_number() const { return 0; }
  virtual bool is_first_responder() const = 0;
  virtual bool is_window_key() const = 0;
  virtual platform::palette palette() const = 0;
  virtual font_metrics metrics_for(font const& f) const = 0;
  /// The font that graphics objects given to draw() will use from now on.
  virtual void set_font(font const& f) = 0;

  virtual void hide_cursor_until_mouse_moves() = 0;
  /// Asks for cursor_at() again.
  virtual void reset_cursor() = 0;
  /// The caret moved or marked text ended: input methods reposition their windows. With `abandon`
  /// the text being composed is dropped.
  virtual void input_method_changed(bool abandon) = 0;
  virtual void show_context_menu(std::vector<menu_item> const& items, point where) = 0;
  /// Lets the user choose one of the items, which may have single characters as keys, in a menu at
  /// `where` or, without it, at the mouse pointer, in letters of so many points. Returns the item's
  /// number, or nothing if there was no choice; events are handled meanwhile.
  virtual std::optional<std::size_t> choose_from_menu(std::vector<menu_item> const& items,
                                                      std::optional<point> where,
                                                      double font_size) = 0;
  /// Drags `content`, a dictionary as for a pasteboard, under a picture of the part of the view
  /// that `shape` covers, taken at `at`. Returns when it has been dropped or given up; events are
  /// handled meanwhile, so that the client may be gone by then.
  virtual void begin_drag(plist::dictionary content, std::vector<rect> const& shape, point at) = 0;
  /// Null where none can be shown. Owned by the host.
  virtual completion_list* completions() { return nullptr; }
  /// Shows a tool tip below the area or, where that is out of sight, at the mouse pointer, until a
  /// key or a button is pressed or the mouse has moved some way.
  virtual void show_tool_tip(tool_tip const& tip) = 0;
  /// Closes the tool tip of this view; false if there was none.
  virtual bool hide_tool_tip() = 0;
  /// Hands the event to the platform's text input: what it stands for comes back by insert_text().
  virtual void interpret_key_event(key_event const& event) = 0;
};

/// The events that the widget passes to the logic.
class view_client {
 public:
  virtual ~view_client() = default;

  virtual void set_host(view_host* host) = 0;  // not owned; null before the widget goes

  virtual void draw(graphics& g, rect const& dirty) = 0;
  /// Returns when all is known that draw() is to show of the visible part, however long that takes.
  virtual void wait_for_visible() = 0;
  /// The pixels of a vertical scroll bar, so many high, at which something is marked; in order.
  virtual std::vector<std::size_t> scroll_ticks(std::size_t /*height*/) const { return {}; }
  /// The size of the visible part that shows this many columns and rows of text, gutter included.
  virtual size size_for(int columns, int rows) const = 0;

  virtual void key_down(key_event const& event) = 0;
  virtual void modifiers_changed(std::uint32_t modifiers) = 0;
  virtual void mouse_down(mouse_event const& event) = 0;
  virtual void mouse_dragged(mouse_event const& event) = 0;
  virtual void mouse_up(mouse_event const& event) = 0;
  virtual cursor cursor_at(point p, std::uint32_t modifiers) const = 0;
  virtual std::optional<tool_tip> tool_tip_at(point p) const = 0;

  /// Something is dragged over the view: which of the offered operations dropping it here would do.
  virtual std::uint32_t dragging_updated(drag_info const& info) = 0;
  /// It has left, or was given up.
  virtual void dragging_exited() = 0;
  /// It has been dropped; false if nothing came of it.
  virtual bool perform_drag_operation(drag_info const& info) = 0;

  virtual void insert_text(std::u16string_view text) = 0;
  /// Text being composed by an input method, with the part selected in it as offset and length in
  /// code units. An empty text ends the composition without a result.
  virtual void set_marked_text(std::u16string_view text, std::size_t offset,
                               std::size_t length) = 0;
  virtual void unmark_text() = 0;
  /// Takes `length` code units away, of which the first stands `offset` after the caret, or before
  /// it if that is negative; no more than there are in the caret's line. Then inserts `text`. All
  /// of it is one step for undo.
  virtual void replace_surrounding_text(std::ptrdiff_t offset, std::size_t length,
                                        std::u16string_view text) = 0;
  /// Where the caret stands, for an input method's windows.
  virtual rect caret_rect() const = 0;
  /// For input methods: the selected text, and what is around the caret.
  virtual std::u16string selected_text() const = 0;
  virtual caret_context text_around_caret() const = 0;

  /// The text for assistive programs, of which `observer` hears from now on; null without a
  /// document. Owned by the client and good until the next call, of this or another member.
  virtual accessible_text* begin_access(accessible_text_observer& /*observer*/) { return nullptr; }
  /// Nobody listens any more.
  virtual void end_access() {}

  /// Whether the text should glide when the wheel scrolls it.
  virtual bool scrolls_smoothly() const { return false; }
  /// The widget was scrolled or resized.
  virtual void visible_rect_changed() = 0;
  /// metrics_for() gives other values: the widget is on a screen of another resolution.
  virtual void font_metrics_changed() = 0;
  /// Keyboard focus, key window or palette changed.
  virtual void focus_changed() = 0;
};

}  // namespace platform
