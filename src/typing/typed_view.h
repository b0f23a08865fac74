#pragma once

#include "styles/styled_view.h"
#include "text/char_types.h"

namespace typing {

/// The view in which one types, with the options and settings that determine what a key does beyond
/// its character. It has a document while something is typed. Names and meaning are WynTextView's,
/// which implements it. Main thread only.
class typed_view : public styles::styled_view {
 public:
  /// False for views that are never visible, as in batch mode.
  virtual bool isSeen() const = 0;

  virtual bool smartTyping() const = 0;
  virtual bool autoIndent() const = 0;
  virtual bool indentedPaste() const = 0;
  virtual unsigned tabSize() const = 0;  ///< in columns, at least 1
  virtual bool treatsSpacesAsTabs() const = 0;

  virtual plist::value stylesForCaretWait(bool wait) const = 0;
  /// The settings for what is typed between two units, of the tokens known so far.
  virtual plist::value stylesForTypingAt(text::iterator const& at) const = 0;
  /// False if there is no scope in which it opens a pair; where the view is seen the answer is
  /// true, since there the scope is at hand.
  virtual bool mayOpenPair(text::char_t typed) const = 0;
  /// False if no scope of the language says how lines are indented; likewise.
  virtual bool mayIndentLines() const = 0;

 protected:
  ~typed_view() = default;
};

}  // namespace typing
