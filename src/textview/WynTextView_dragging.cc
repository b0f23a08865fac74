#include "actions/clipboard.h"
#include "platform/desktop.h"
#include "platform/user_defaults.h"
#include "platform/utf.h"
#include "text/view.h"
#include "textview/WynTextView.h"
#include "textview/dropped_content.h"
#include "textview/geometry.h"
#include "textview/view_will_change.h"

#include <algorithm>

// Dragging the selection away, and what is dropped into the text.

namespace type = platform::pasteboard_type;
namespace modifier = platform::modifier;
namespace operation = platform::drag_operation;

using platform::drag_info;
using platform::point;
using platform::rect;

namespace {

constexpr double scroll_period = 0.05;    // seconds
constexpr std::int64_t drag_delay = 150;  // milliseconds that the mouse is held still before

std::u16string_view units_of(std::vector<char16_t> const& text) {
  return {text.data(), text.size()};
}

double beyond(double at, double first, double last) {
  return at < first ? at - first : at > last ? at - last : 0;
}

}  // namespace

// Pressed on the selection and held a moment: then moving the mouse drags it. Moved at once it
// selects anew, and released it sets the caret.
bool WynTextView::armDragAtClick(platform::mouse_event const& event) {
  if (host_ == nullptr || !view_->has_selection() || event.click_count != 1) return false;
  constexpr std::uint32_t keys =
      modifier::shift | modifier::control | modifier::option | modifier::command;
  std::uint32_t const held = event.modifiers & keys;
  bool const is_free = held == 0 || (held == modifier::command && !host_->is_window_key());
  if (!is_free || !isInSelection(event.position)) return false;
  auto& defaults = platform::user_defaults::standard();
  double const delay =
      static_cast<double>(defaults.integer("NSDragAndDropTextDelay", drag_delay)) / 1000;
  dragArm_ = drag_arm::waiting;
  dragArmTimer_ = platform::desktop::current().loop().schedule(delay, false, [this] {
    dragArm_ = drag_arm::armed;
    if (host_ != nullptr) host_->reset_cursor();
  });
  return true;
}

void WynTextView::disarmDrag() {
  dragArm_ = drag_arm::none;
  dragArmTimer_.reset();
}

bool WynTextView::isInSelection(point p) const {
  return visibleTextRect().contains(p) &&
         selection_region(*this, host_->visible_rect()).contains(p);
}

// The button's release goes to who gets the drop. `event` is the press: the picture hangs there.
void WynTextView::startDragForEvent(platform::mouse_event const& event) {
  disarmDrag();
  leftMouseDown_ = false;
  if (host_ == nullptr || !view_->has_selection()) return;
  std::vector<rect> shape;
  for (rect const& r : selection_region(*this, host_->visible_rect()).rects()) {
    rect const shown = r.intersection(visibleTextRect());
    if (!shown.empty()) shape.push_back(shown);
  }
  text_clip const clip{selected_text(), view_->is_in_column_mode()};
  host_->begin_drag(pasteboard_types_of(clip), shape, event.position);
}

std::uint32_t WynTextView::dragOperationForInfo(drag_info const& info) const {
  if (view_ == nullptr || host_ == nullptr) return operation::none;
  bool const can_copy = info.operations & operation::copy;
  std::uint32_t const generic = info.operations & operation::generic;
  if (!info.is_from_this_view) return can_copy ? operation::copy : generic;
  if (isInSelection(info.position)) return operation::none;
  if (generic != 0) return generic;
  return can_copy ? operation::copy : operation::none;
}

std::uint32_t WynTextView::dragging_updated(drag_info const& info) {
  setDropPosition(info.position);
  if (dropScrollTimer_ == nullptr && host_ != nullptr)
    dropScrollTimer_ = platform::desktop::current().loop().schedule(
        scroll_period, true, [this] { scrollTowardsDrop(); });
  std::uint32_t const possible = dragOperationForInfo(info);
  showsDropCaret_ = possible != operation::none;
  return possible;
}

void WynTextView::dragging_exited() {
  if (!dropPoint_) return;
  redrawDropCaret();
  dropPoint_.reset();
  dropScrollTimer_.reset();
}

// Kept from the corner of what is visible, since the text scrolls under it.
void WynTextView::setDropPosition(point p) {
  redrawDropCaret();
  rect const visible = host_ != nullptr ? host_->visible_rect() : rect{};
  dropPoint_ = point{p.x - visible.x, p.y - visible.y};
  redrawDropCaret();
}

void WynTextView::redrawDropCaret() {
  auto const caret = dropCaret();
  if (caret) host_->set_needs_display(caret->intersection(host_->visible_rect()));
}

std::optional<rect> WynTextView::dropCaret() const {
  if (!dropPoint_ || !showsDropCaret_ || view_ == nullptr || host_ == nullptr) return std::nullopt;
  rect const visible = host_->visible_rect();
  point const p{dropPoint_->x + visible.x, dropPoint_->y + visible.y};
  point const at = position_of(*this, position_at(*this, p, text::freehanded_t::automatic));
  return rect{at.x, at.y, 1, layout_.lineHeight()};
}

// Near the edge the text moves, so that places out of sight can be reached.
void WynTextView::scrollTowardsDrop() {
  if (host_ == nullptr || view_ == nullptr || !dropPoint_) return;
  rect const whole = host_->visible_rect();
  double const edge = layout_.lineHeight();
  rect const inner = visibleTextRect().inset(edge, edge);
  point const p{dropPoint_->x + whole.x, dropPoint_->y + whole.y};
  double const dx = beyond(p.x, inner.x, inner.right()), dy = beyond(p.y, inner.y, inner.bottom());
  if (dx == 0 && dy == 0) return;
  redrawDropCaret();
  host_->scroll_to({whole.x + dx, whole.y + dy});
  redrawDropCaret();
}

// By the order of what is tried first, a drop of this program keeps its columns, and a file that
// comes with its name as text is a file.
bool WynTextView::perform_drag_operation(drag_info const& info) {
  std::uint32_t const wanted = dragOperationForInfo(info);
  dragging_exited();
  if (wanted == operation::none) return false;
  text::view_iterator const to = position_at(*this, info.position, text::freehanded_t::automatic);
  if (info.content.get(type::quirnote)["Content"].as_string())
    return dropText(info, to, wanted == operation::generic);
  if (plist::value const files = info.content.get(type::file_list); !files.elements().empty()) {
    dropFiles(files, to, info.modifiers);
    return true;
  }
  if (plist::value const color = info.content.get(type::color); color.as_array()) {
    std::u16string const text = dropped_content::text_of_color(color);
    return insertDropped(text, to);
  }
  return dropText(info, to, wanted == operation::generic);
}

bool WynTextView::dropText(drag_info const& info, text::view_iterator const& to, bool move) {
  auto const clip = clip_of(info.content);
  if (!clip) return false;
  view_will_change const scope(*this, true);
  // The text may have changed under a drag, so that something else is selected by now.
  if (move && info.is_from_this_view && view_->selection.units() == clip->text) {
    view_->move_selection_to(to);
  } else if (clip->rectangular) {
    view_->selection.set_caret(to);
    view_->insert_column(clip->text.begin(), clip->text.end(), 0, 0, true);
  } else {
    view_->selection.set_caret(to);
    view_->replace_selection(clip->text.begin(), clip->text.end());
  }
  return true;
}

bool WynTextView::insertDropped(std::u16string_view text, text::view_iterator const& to) {
  if (text.empty()) return false;
  view_will_change const scope(*this, true);
  view_->selection.set_caret(to);
  view_->insert(text.begin(), text.end());
  return true;
}

// Questions may come up. The program that the files come from waits for the end of the drop, so
// they are asked after it; the caret keeps the place.
void WynTextView::dropFiles(plist::value const& files, text::view_iterator const& to,
                            std::uint32_t modifiers) {
  {
    view_will_change const scope(*this, true);
    view_->selection.set_caret(to);
  }
  std::vector<std::string> paths;
  for (plist::value const& path : files.elements()) paths.push_back(path.string_or(""));
  bool const as_paths = modifiers & (modifier::control | modifier::shift | modifier::option);
  dropTimer_ = platform::desktop::current().loop().schedule(0, false, [this, paths, as_paths] {
    auto const text = dropped_content::text_of_files(paths, as_paths);
    if (view_ != nullptr) insertDropped(units_of(text), view_->selection.current_mark);
  });
}
