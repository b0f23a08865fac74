#pragma once

#include "grammar/scope_path.h"
#include "styles/scope_style.h"

#include <string>

namespace grammar {
class tokenize_filter;
}
namespace text {
class view;
}

namespace layout {

/// A text with styles, as rows of it are drawn: in a text view or on a page. Main thread only.
class drawn_text {
 public:
  /// Not null while something is drawn.
  virtual text::view* view() const = 0;
  /// Null for text without scopes.
  virtual grammar::tokenize_filter* tokenizer() const = 0;
  /// How text with a path of the tokenizer is drawn; 0 is the empty path, also without a tokenizer.
  /// Good until something else is drawn.
  virtual styles::drawn_style const& styleOfPath(grammar::path_tree::id id) const = 0;
  /// What an input method is composing, shown at marked_text_place(); it is no part of the text
  /// yet.
  virtual std::u16string const& markedText() const = 0;

 protected:
  ~drawn_text() = default;
};

}  // namespace layout
