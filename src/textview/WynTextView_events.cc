#include "actions/clipboard.h"
#include "bundles/BundleManager.h"
#include "layout/geometry.h"
#include "platform/desktop.h"
#include "platform/utf.h"
#include "text/views/view.h"
#include "textview/WynTextView.h"
#include "textview/mouse/mouse_tracker.h"
#include "textview/view_will_change.h"
#include "typing/text_count.h"

#include <algorithm>
#include <utility>

// The mouse: which part of the view a click is for. What the left button does in the text stands in
// mouse_tracker.

using platform::mouse_button;
using platform::mouse_event;
using platform::point;
using platform::rect;

namespace {

constexpr double primary_delay = 0.1;  // seconds after the selection last changed
constexpr std::size_t most_units_counted = 1 << 20;

}  // namespace

void WynTextView::modifiers_changed(std::uint32_t modifiers) {
  mouse_->modifiers_changed(modifiers);
}

platform::cursor WynTextView::cursor_at(point p, std::uint32_t modifiers) const {
  if (host_ != nullptr && p.x < host_->visible_rect().x + layout_.gutterWidth())
    return platform::cursor::arrow;
  if (mouse_->is_drag_armed()) return platform::cursor::arrow;
  if (view_ != nullptr && rowOfEllipsisAt(p)) return platform::cursor::arrow;
  return textview::is_option_alone(modifiers) ? platform::cursor::cross : platform::cursor::text;
}

void WynTextView::mouse_down(mouse_event const& event) {
  closeIncrementalSearchWindow();
  showFindNote("");
  forgetPendingKeys();
  typingRun_.end();
  if (view_ == nullptr) return;
  if (isRecordingMacro()) {
    platform::desktop::current().alerts().run(
        {"You Are Recording a Macro",
         "What the mouse does can't be recorded. Use keys and menus, or end the recording first "
         "(Bundles > Stop Recording).",
         {"Continue"},
         0,
         false,
         "",
         platform::alert_icon::information});
    return;
  }
  abandonMarkedText();
  mouse_->take_modifiers(event.modifiers);
  if (event.button == mouse_button::middle) return pastePrimarySelectionAt(event.position);
  if (event.button == mouse_button::right) {
    // Where a movement may mean something, the menu waits for the release.
    if (!BundleManager::sharedInstance().hasMouseGestures()) return showContextMenu(event.position);
    return mouse_->gesture().begin(event.position);
  }
  if (toggleBookmarkAtClick(event.position) || toggleFoldingAtClick(event)) return;
  mouse_->press(event);
}

void WynTextView::mouse_dragged(mouse_event const& event) {
  if (view_ == nullptr) return;
  if (event.button != mouse_button::right) return mouse_->drag(event);
  if (mouse_->gesture().move_to(event.position))
    showPendingKeys("Gesture " + mouse_->gesture().strokes());
}

void WynTextView::mouse_up(mouse_event const& event) {
  if (event.button == mouse_button::right && mouse_->gesture().is_going_on()) return endGesture();
  mouse_->release(event);
}

void WynTextView::endGesture() {
  textview::mouse_gesture const gesture = mouse_->gesture();
  mouse_->gesture().cancel();
  showPendingKeys("");
  if (gesture.strokes().empty()) return showContextMenu(gesture.begun_at());
  if (!BundleManager::sharedInstance().executeMouseGesture(gesture.strokes(), *this))
    platform::desktop::current().beep();
}

void WynTextView::pastePrimarySelectionAt(point p) {
  auto const clip = actions::clip_of(platform::desktop::current().primary_selection());
  if (!clip) return;
  textview::view_will_change const scope(*this, true);
  view_->selection.set_caret(layout::position_at(*this, p, text::freehanded_t::automatic));
  view_->insert(clip->text.begin(), clip->text.end());
}

// What is selected can be pasted elsewhere with the middle button. Copied a moment after the last
// change, so that selecting a large text step by step stays quick.
void WynTextView::selectionDidChange() {
  if (host_ == nullptr) return;
  if (!view_->has_selection()) {
    if (std::exchange(showsSelectionCount_, false)) updateValueForKey("", "selection");
    return;
  }
  primaryTimer_ = platform::desktop::current().loop().schedule(primary_delay, false, [this] {
    publishPrimarySelection();
    publishSelectionCount();
  });
}

void WynTextView::publishSelectionCount() {
  if (view_ == nullptr || !view_->has_selection()) return;
  text::selection const& selection = view_->selection;
  std::size_t const lines = selection.last().base.line - selection.first().base.line + 1;
  showsSelectionCount_ = true;
  updateValueForKey(selection.units().size() > most_units_counted
                        ? std::to_string(lines) + " lines"
                        : typing::described(typing::count_text(selection.units())),
                    "selection");
}

void WynTextView::publishPrimarySelection() {
  if (view_ == nullptr || !view_->has_selection()) return;
  platform::desktop::current().primary_selection().set(
      {{std::string(platform::pasteboard_type::text), unicode::to_utf8(selected_text())}});
}

void WynTextView::showContextMenu(point p) {
  if (host_ == nullptr) return;
  text::selection const& selection = view_->selection;
  if (selection.empty() || !layout::selection_region(*this, host_->visible_rect()).contains(p)) {
    textview::view_will_change const scope(*this, true);
    view_->selection.set_caret(layout::position_at(*this, p, text::freehanded_t::automatic));
  }
  if (contextMenu_) host_->show_context_menu(contextMenu_(), p);
}

void WynTextView::showContextMenuAtCaret() {
  if (host_ == nullptr || view_ == nullptr || !contextMenu_) return;
  rect const caret = layout::caret_rectangle(*this), seen = visibleTextRect();
  host_->show_context_menu(contextMenu_(), {std::clamp(caret.x, seen.x, seen.right()),
                                            std::clamp(caret.bottom(), seen.y, seen.bottom())});
}
