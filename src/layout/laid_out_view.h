#pragma once

#include "layout/TextLayout.h"
#include "layout/drawn_text.h"

namespace layout {

/// A text drawn on the grid of a TextLayout, as geometry needs it. Its view() is null while there
/// is no document. Main thread only.
class laid_out_view : public drawn_text {
 public:
  virtual TextLayout const& layout() const = 0;
  /// Null for one that is in no window.
  virtual platform::view_host* host() const = 0;
  /// The visible part without the gutter.
  virtual platform::rect visibleTextRect() const = 0;
  /// From where markedText() begins to where the caret is drawn inside it, in pixels.
  virtual double markedTextOffset() const = 0;
  virtual bool overwriteMode() const = 0;

 protected:
  ~laid_out_view() = default;
};

}  // namespace layout
