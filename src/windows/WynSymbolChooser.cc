#include "windows/WynSymbolChooser.h"

#include <algorithm>

#include "grammar/tokenize_filter.h"
#include "text/views/view.h"
#include "textview/WynTextView.h"

namespace {

bool is_separator(styles::symbol const& each) {
  return each.name == "-";
}

// The list follows the text after a while; where that is soon done it is made now.
void update_symbols(WynTextView& view) {
  constexpr std::size_t most_units = 100'000;
  text::storage const& storage = *view.view()->storage;
  if (view.tokenizer() == nullptr || storage.length() > most_units) return;
  if (view.tokenizer()->wait_for(storage.lines() - 1)) view.buildFunctionPopUp();
}

std::shared_ptr<std::vector<styles::symbol> const> symbols_of(WynTextView& view) {
  update_symbols(view);
  auto all = view.sharedFunctionPopUp();
  if (std::none_of(all->begin(), all->end(), is_separator)) return all;
  auto result = std::make_shared<std::vector<styles::symbol>>(*all);
  std::erase_if(*result, is_separator);
  return result;
}

std::size_t line_of_caret(WynTextView& view) {
  return view.view()->selection.current_mark.base.line + std::size_t{1};
}

}  // namespace

WynSymbolChooser::WynSymbolChooser(WynTextView& view)
    : view_(view),
      symbols_(symbols_of(view)),
      list_("Go to Symbol", windows::symbol_entries(*symbols_, line_of_caret(view))) {}

bool WynSymbolChooser::accept(std::size_t row) {
  if (view_.view() == nullptr) return false;
  view_.performSelectorWithObject("goToLineNumber:",
                                  static_cast<std::int64_t>((*symbols_)[list_.entry(row)].line));
  return true;
}
