#pragma once

#include <memory>
#include <vector>

#include "platform/picker.h"
#include "styles/symbol.h"
#include "windows/choice_list.h"

class WynTextView;

/// The list in which a symbol of a document is found by a few letters of its name; it begins at the
/// one at the caret. Made for one use: the symbols are those of the time when it was made, as far
/// as they are known. Main thread only.
class WynSymbolChooser final : public platform::picker_source {
 public:
  /// The view must show a document, and outlive it.
  explicit WynSymbolChooser(WynTextView& view);

  /// Goes to the symbol's line; false if the view has no document any more.
  bool accept(std::size_t row);

  // platform::picker_source
  void set_filter(std::string const& text) override { list_.set_filter(text); }
  void take_key(platform::key_event const&) override {}
  std::size_t count() const override { return list_.count(); }
  platform::picker_row row(std::size_t index) const override { return list_.row(index); }
  std::size_t first_row() const override { return list_.first_row(); }
  std::string note() const override { return list_.note(); }

 private:
  WynTextView& view_;
  std::shared_ptr<std::vector<styles::symbol> const> symbols_;
  windows::choice_list list_;
};
