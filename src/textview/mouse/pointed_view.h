#pragma once

#include "layout/laid_out_view.h"
#include "platform/event.h"

#include <cstdint>
#include <functional>
#include <string>

namespace textview {

/// What the mouse and drops need of the view in which they happen. Names and meaning are
/// WynTextView's, which implements it. Main thread only.
class pointed_view : public layout::laid_out_view {
 public:
  /// Performs an action of the view that takes no argument, such as "selectWord:".
  virtual void performNamed(char const* selector) = 0;
  /// Calls `edit` as one change of the user's, inside of a view_will_change scope with its group.
  virtual void change(std::function<void()> const& edit) = 0;
  /// Runs the drag command for such a file, of several the one that the user chooses, with the
  /// modifier keys that are held. False if there is none.
  virtual bool dropFile(std::string const& path, std::uint32_t modifiers) = 0;
  virtual bool isRecordingMacro() const = 0;
  /// Drags the selection away from where the button was pressed. The view may be gone on return.
  virtual void startDragForEvent(platform::mouse_event const& event) = 0;

 protected:
  ~pointed_view() = default;
};

}  // namespace textview
