#pragma once

#include "plist/value.h"
#include "text/pos.h"

#include <optional>
#include <utility>

namespace text {
class view;
}

namespace search {

/// A view in which the find panel's buttons work. WynTextView implements it. Main thread only.
class searched_view {
 public:
  /// Null while there is no document.
  virtual text::view* view() const = 0;
  /// Options are those of WynFindManager; the answer has `statusText`, and whether anything was
  /// `found`.
  virtual plist::value findWithOptions(plist::dictionary options) = 0;
  /// While it does, only what the user asks for moves the selection.
  virtual bool isRecordingMacro() const = 0;

  /// Takes the selection as what is searched from now on, or all of the text again. False if
  /// nothing, or a column, is selected.
  virtual bool setFindScope(bool in_selection) = 0;
  virtual std::optional<std::pair<text::pos, text::pos>> findScope() const = 0;
  /// Selects a match and scrolls it into sight.
  virtual void showMatch(text::pos first, text::pos last) = 0;
  /// The marks of matches on the scroll bar are others.
  virtual void ticksDidChange() = 0;

 protected:
  ~searched_view() = default;
};

}  // namespace search
