#pragma once

#include "plist/value.h"
#include "styles/symbol.h"
#include "text/pos.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace styles {
class styled_view;

/// A walk over the tokens of a text, from its start, that collects the symbols: the runs of text
/// whose style has `showInSymbolList`. It goes some steps at a time, so that there is no wait for a
/// long text; when text or tokens have changed meanwhile a new one has to begin. Main thread only.
class symbol_walk {
 public:
  /// The text view must show a document as long as the walk continues.
  explicit symbol_walk(styled_view& text_view);

  /// Takes some `steps`, a hundred thousand of which take about a millisecond, under the storage's
  /// mutex. True at the end of the text.
  bool go_on(std::size_t steps);
  /// The state of the text when the walk began.
  std::uint32_t memento() const { return memento_; }
  /// Those found; to be moved out at the end.
  std::vector<symbol> symbols;

 private:
  std::size_t end_symbol(text::pos end);

  styled_view& text_view_;
  std::uint32_t memento_;
  std::size_t line_ = 0, token_ = 0;  ///< what is to be looked at next
  bool inside_ = false;               ///< of a symbol that began at
  text::pos begin_;
  plist::value program_;
};

}  // namespace styles
