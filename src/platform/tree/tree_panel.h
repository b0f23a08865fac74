#pragma once

#include "platform/event.h"
#include "platform/menu.h"
#include "platform/pasteboard.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// The two halves of a tree of files in a side bar: its logic, which knows what the rows are, and
/// the widget that shows them. Rows are asked for when they are painted, so they may be many. Main
/// thread only.
namespace platform {

/// By which a row is recognised at a glance.
enum class tree_icon : std::uint8_t { folder, group, file, text, source, markup, image, archive };

struct tree_row {
  std::string title;   ///< UTF-8, on one line
  std::string detail;  ///< what is to be known besides, dimmed: "Permission denied"
  std::string tip;     ///< shown while the mouse rests on it; may have several lines
  tree_icon icon = tree_icon::file;
  std::size_t depth = 0;
  bool can_open = false;  ///< something may be shown below it
  bool is_open = false;   ///< that is shown
  bool is_selected = false;
  bool is_current = false;  ///< where the keyboard is
  bool is_shown = false;    ///< the file that the window shows
  bool has_tab = false;     ///< a file that is open
  bool is_edited = false;   ///< and not saved
  bool is_missing = false;  ///< not on the disk
  bool is_pale = false;     ///< ignored, as what a program makes
  bool is_link = false;
};

/// Where something that is dragged would go.
enum class drop_place : std::uint8_t { above, on, below, end };

struct tree_drop {
  std::size_t row = 0;  ///< less than count(), unless it is the `end`
  drop_place place = drop_place::end;
  std::uint32_t operations = 0;  ///< bits of drag_operation that the source offers
  bool is_from_this_view = false;
  bool wants_copy = false;  ///< the user holds Ctrl
  pasteboard_content const& content;
};

struct drop_answer {
  std::uint32_t operation = 0;  ///< of drag_operation; none if it can't go there
  std::size_t row = 0;          ///< what to mark, with the place
  drop_place place = drop_place::end;
};

/// What the logic may ask of the widget.
class tree_host {
 public:
  virtual ~tree_host() = default;

  /// Number, order or looks of the rows have changed.
  virtual void rows_changed() = 0;
  /// Scrolls as little as brings the row into sight.
  virtual void show_row(std::size_t row) = 0;
  /// How many rows are in sight, at least 1.
  virtual std::size_t page_size() const = 0;
  /// Lets the user edit the row's title, with so many of its UTF-16 units selected; ends in
  /// tree_client::title_edited or title_dropped. The row stays until then.
  virtual void edit_title(std::size_t row, std::string const& title, std::size_t selected) = 0;
  /// Ends it, without a call.
  virtual void end_editing() = 0;
  /// The client goes: it isn't called from here on.
  virtual void client_goes() = 0;
};

/// The events that the widget passes to the logic.
class tree_client {
 public:
  virtual ~tree_client() = default;

  virtual void set_host(tree_host* host) = 0;  // not owned; null before the widget goes

  virtual std::size_t count() = 0;
  virtual tree_row row(std::size_t index) = 0;

  /// False for a key that means nothing here.
  virtual bool key_down(key_event const& event) = 0;
  /// The left button was pressed on a row; or released there without a drag, for those clicks that
  /// can't be told from the beginning of a drag before.
  virtual void mouse_down(std::size_t row, std::uint32_t modifiers) = 0;
  virtual void mouse_up(std::size_t row, std::uint32_t modifiers) = 0;
  virtual void double_click(std::size_t row) = 0;
  /// Below the last row.
  virtual void mouse_down_outside() = 0;
  /// What opens and closes a row was clicked; with everything in it if `all`.
  virtual void toggle(std::size_t row, bool all) = 0;

  /// The menu for a row, which becomes selected unless it is, or for none.
  virtual std::vector<menu_item> context_menu(std::optional<std::size_t> row) = 0;
  /// The row with the keyboard, where the menu is shown for a key.
  virtual std::optional<std::size_t> current_row() = 0;

  /// The row whose title is edited, where rows have changed meanwhile; nothing if it has gone.
  virtual std::optional<std::size_t> edited_row() = 0;
  /// Why the title can't be so, while it is typed; "" if it can.
  virtual std::string fault_of_title(std::string const& title) = 0;
  virtual void title_edited(std::string const& title) = 0;
  virtual void title_dropped() = 0;

  /// What a drag that begins at a selected row carries.
  virtual plist::dictionary drag_content() = 0;
  virtual drop_answer dragging_updated(tree_drop const& drop) = 0;
  virtual bool perform_drop(tree_drop const& drop) = 0;

  virtual void focus_changed() = 0;
};

}  // namespace platform
