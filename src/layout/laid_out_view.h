#pragma once

#include "layout/TextLayout.h"

#include <string>

namespace text {
class view;
}

namespace layout {

/// A view on the grid of a TextLayout, as geometry needs it. Main thread only.
class laid_out_view {
 public:
  /// Null while there is no document.
  virtual text::view* view() const = 0;
  virtual TextLayout const& layout() const = 0;
  /// Null for one that is in no window.
  virtual platform::view_host* host() const = 0;
  /// The visible part without the gutter.
  virtual platform::rect visibleTextRect() const = 0;
  /// As in drawn_text.
  virtual std::u16string const& markedText() const = 0;
  /// From where that begins to where the caret is drawn inside it, in pixels.
  virtual double markedTextOffset() const = 0;
  virtual bool overwriteMode() const = 0;

 protected:
  ~laid_out_view() = default;
};

}  // namespace layout
