#pragma once

#include "grammar/scope_path.h"
#include "plist/value.h"
#include "text/char_types.h"

namespace grammar {
class tokenize_filter;
}
namespace text {
class view;
struct iterator;
}  // namespace text

namespace typing {

/// The view that somebody types in, with the options and settings that say what a key does beyond
/// its character. Names and meaning are WynTextView's, which implements it. Main thread only.
class typed_view {
 public:
  /// Not null while something is typed.
  virtual text::view* view() const = 0;
  /// Null before the document has had a language.
  virtual grammar::tokenize_filter* tokenizer() const = 0;
  /// False for one that nobody can look at, as in batch mode.
  virtual bool isSeen() const = 0;

  virtual bool smartTyping() const = 0;
  virtual bool autoIndent() const = 0;
  virtual bool indentedPaste() const = 0;
  virtual unsigned tabSize() const = 0;  ///< in columns, at least 1
  virtual bool treatsSpacesAsTabs() const = 0;

  virtual bit_stack::storage graphPathForIterator(text::iterator const& it) const = 0;
  virtual plist::value stylesForContext(bit_stack::storage const& path) const = 0;
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
