#pragma once

#include "plist/value.h"

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

 protected:
  ~searched_view() = default;
};

}  // namespace search
