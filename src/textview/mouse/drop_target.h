#pragma once

#include "platform/dragging.h"
#include "platform/geometry.h"
#include "platform/run_loop.h"
#include "plist/value.h"
#include "text/views/view_iterator.h"
#include "textview/mouse/pointed_view.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace textview {

/// What is dragged over a text view: where it would be dropped, and what comes of dropping it. A
/// view without a document or host takes nothing. Owned by the view; main thread only.
class drop_target {
 public:
  explicit drop_target(pointed_view& text_view);

  /// One bit of platform::drag_operation. From elsewhere things are copied; within the view they
  /// are moved, unless the keys held leave only copying. Nothing can be dropped on the selection
  /// that is dragged.
  std::uint32_t operation_for(platform::drag_info const& info) const;
  /// The drag continues here; the answer is that of operation_for().
  std::uint32_t update(platform::drag_info const& info);
  void exit();
  /// False if nothing came of it.
  bool perform(platform::drag_info const& info);
  /// Files that were dropped are not taken any more, if they haven't been yet.
  void forget_files() { files_timer_.reset(); }

  /// Where something would be dropped; nothing while nothing is dragged over the view.
  std::optional<platform::rect> caret() const;

 private:
  void set_position(platform::point p);
  void redraw_caret();
  void scroll_towards_edge();
  bool drop_text(platform::drag_info const& info, text::view_iterator const& to, bool move);
  void drop_files(plist::value const& files, text::view_iterator const& to,
                  std::uint32_t modifiers);
  void take_files(std::vector<std::string> paths, std::uint32_t modifiers);
  bool insert(std::u16string_view text, text::view_iterator const& to);

  pointed_view& text_view_;
  std::optional<platform::point> in_visible_;  ///< from the corner of what is visible
  bool shows_caret_ = false;
  std::unique_ptr<platform::timer> scroll_timer_, files_timer_;
};

}  // namespace textview
