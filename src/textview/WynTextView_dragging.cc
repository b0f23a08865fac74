#include "actions/clipboard.h"
#include "layout/geometry.h"
#include "text/views/view.h"
#include "textview/WynTextView.h"
#include "textview/mouse/drop_target.h"
#include "textview/mouse/mouse_tracker.h"
#include "textview/view_will_change.h"

// Dragging the selection away. What is dropped into the text goes to drop_target.

using platform::drag_info;
using platform::rect;

void WynTextView::change(std::function<void()> const& edit) {
  textview::view_will_change const scope(*this, true);
  edit();
}

// The button's release goes to who gets the drop. `event` is the press: the picture hangs there.
void WynTextView::startDragForEvent(platform::mouse_event const& event) {
  mouse_->forget_press();
  if (host_ == nullptr || !view_->has_selection()) return;
  std::vector<rect> shape;
  for (rect const& r : layout::selection_region(*this, host_->visible_rect()).rects()) {
    rect const shown = r.intersection(visibleTextRect());
    if (!shown.empty()) shape.push_back(shown);
  }
  actions::text_clip const clip{selected_text(), view_->is_in_column_mode(), std::nullopt};
  host_->begin_drag(actions::pasteboard_types_of(clip), shape, event.position);
}

std::uint32_t WynTextView::dragOperationForInfo(drag_info const& info) const {
  return drop_->operation_for(info);
}

std::uint32_t WynTextView::dragging_updated(drag_info const& info) {
  return drop_->update(info);
}

void WynTextView::dragging_exited() {
  drop_->exit();
}

bool WynTextView::perform_drag_operation(drag_info const& info) {
  return drop_->perform(info);
}

std::optional<rect> WynTextView::dropCaret() const {
  return drop_->caret();
}
