#include "text/views/view.h"
#include "textview/WynTextView.h"
#include "textview/view_will_change.h"

// Undo and redo: by single steps, as macros need it, and by runs of typing, as users do.

void WynTextView::addUndoMethods() {
  addMethod("undo:", [this](plist::value const&) { return undoOrRedo(true, false); });
  addMethod("redo:", [this](plist::value const&) { return undoOrRedo(false, false); });
  addMethod("undoTyping:", [this](plist::value const&) { return undoOrRedo(true, true); });
  addMethod("redoTyping:", [this](plist::value const&) { return undoOrRedo(false, true); });
  addMethod("canUndoTyping", [this](plist::value const&) {
    return plist::value(view_ != nullptr && view_->can_undo());
  });
  addMethod("canRedoTyping", [this](plist::value const&) {
    return plist::value(view_ != nullptr && view_->can_redo());
  });
}

// How long a run is depends on when it was typed, so a macro notes the steps of it.
plist::value WynTextView::undoOrRedo(bool undo, bool run) {
  if (view_ == nullptr) return false;
  if (!(undo ? view_->can_undo() : view_->can_redo())) return false;
  abandonMarkedText();
  textview::view_will_change const scope(*this, false);
  view_->center_selection_pending = true;
  auto& manager = view_->storage->undo_manager;
  if (!run) {
    undo ? manager.undo() : manager.redo();
    return {};
  }
  for (std::size_t steps = undo ? manager.undo_run() : manager.redo_run(); steps > 0; --steps)
    recordMacroCommand(undo ? "undo:" : "redo:", {});
  return {};
}
