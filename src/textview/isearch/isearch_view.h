#pragma once

#include "plist/value.h"

#include <string_view>

namespace textview {

/// What an incremental search needs of the view that it searches. Names and meaning are
/// WynTextView's, which implements it. Main thread only.
class isearch_view {
 public:
  /// Goes to the nearest match, or with `further` to another one; false if there is none.
  virtual bool findNextIncrementalSearchString(bool further) = 0;
  virtual bool findPreviousIncrementalSearchString(bool further) = 0;
  /// For the status bar.
  virtual void updateValueForKey(plist::value const& value, std::string_view key) = 0;
  /// Destroys the search.
  virtual void closeIncrementalSearchWindow() = 0;

 protected:
  ~isearch_view() = default;
};

}  // namespace textview
