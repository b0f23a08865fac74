#include "conventions/declared.h"
#include "documents/WynDocument.h"
#include "grammar/tokenize_filter.h"
#include "settings/store.h"
#include "text/views/view.h"
#include "textview/WynTextView.h"
#include "textview/view_will_change.h"

#include <algorithm>

// What becomes of the ends of lines when a document is saved.

namespace {

std::size_t trailing_blanks(text::unit_view line) {
  std::size_t const last = line.find_last_not_of(u" \t");
  return line.size() - (last == line.npos ? 0 : last + 1);
}

bool wanted(std::optional<bool> declared, char const* key, bool was_so) {
  if (declared) return *declared;
  std::string const choice = settings::store().string(key);
  return choice == "always" || (choice == "kept" && was_so);
}

}  // namespace

void WynTextView::noteEndsOfLines() {
  text::storage const& storage = document_->storage();
  hadFinalNewline_ = !storage.empty() && storage.size(storage.lines() - 1) == 0;
  hadTrailingBlanks_ = false;
  if (settings::store().string("WynTrimTrailingBlanks") != "kept") return;
  for (std::size_t line = 0; line < storage.lines() && !hadTrailingBlanks_; ++line)
    hadTrailingBlanks_ = trailing_blanks(storage.line_units(line)) != 0;
}

void WynTextView::tidyBeforeSaving(conventions::declared const& project) {
  if (view_ == nullptr) return;
  text::storage& storage = *view_->storage;
  bool const trims =
      wanted(project.trim_trailing_blanks, "WynTrimTrailingBlanks", !hadTrailingBlanks_);
  auto const says = modelineFinalNewline_ ? modelineFinalNewline_ : project.final_newline;
  bool const ends = wanted(says, "WynFinalNewline", hadFinalNewline_) && !storage.empty() &&
                    storage.size(storage.lines() - 1) != 0;
  if (!trims && !ends) return;
  textview::view_will_change const scope(*this, true);
  // All that changes stands after the marks, or in lines without any.
  text::selection const kept = view_->selection.without_text();
  if (trims) trimTrailingBlanks();
  char16_t const newline = u'\n';
  if (ends) storage.insert(storage.end(-1), &newline, &newline + 1);
  view_->selection = kept;
}

// Where the caret or an end of the selection stands the user may not be done yet.
void WynTextView::trimTrailingBlanks() {
  text::storage& storage = *view_->storage;
  // Without the scopes it isn't known where blanks mean something.
  if (tokenizer_ != nullptr) {
    tokenizer_->start();
    if (!tokenizer_->wait_for(storage.lines())) return;
  }
  text::selection const& selection = view_->selection;
  std::size_t const kept[] = {selection.current_mark.base.line, selection.first_mark.base.line,
                              selection.last_mark.base.line};
  for (std::size_t line = storage.lines(); line-- > 0;) {
    text::unit_view const units = storage.line_units(line);
    std::size_t const blanks = trailing_blanks(units);
    if (blanks == 0 || std::count(std::begin(kept), std::end(kept), line) != 0) continue;
    text::iterator const end(line, units.size(), &storage);
    plist::value const says = stylesForTypingAt(end)["trimTrailingBlanks"];
    if (says && !says.boolean_or(true)) continue;
    storage.erase(text::iterator(line, units.size() - blanks, &storage), end);
  }
}
