#include "actions/word_units.h"
#include "platform/utf.h"
#include "text/views/view.h"
#include "textview/WynCompletionManager.h"
#include "textview/WynTextView.h"
#include "textview/view_will_change.h"
#include "typing/completion_candidates.h"
#include "typing/completion_helper.h"
#include "typing/scoped_completions.h"

#include <limits>
#include <utility>

// Completion of the word before the caret: in its place, or from a list.

void WynTextView::addCompletionMethods() {
  addMethod("nextCompletion:",
            [this](plist::value const&) { return plist::value(complete(true)); });
  addMethod("previousCompletion:",
            [this](plist::value const&) { return plist::value(complete(false)); });
  addMethod("showCompletionList:", [this](plist::value const&) {
    abandonMarkedText();
    return plist::value(WynCompletionManager::sharedInstance().open(*this));
  });
  addMethod("acceptCompletion:", [this](plist::value const& text) {
    return plist::value(view_ != nullptr && acceptCompletion(text.string_or("")));
  });
  addMethod("matchesForString:",
            [this](plist::value const& typed) { return matchesForString(typed.string_or("")); });
}

// All candidates in one place are one step of undo.
bool WynTextView::complete(bool forward) {
  if (view_ == nullptr) return false;
  abandonMarkedText();
  WynCompletionManager::sharedInstance().closeFor(*this);
  text::view* const view = view_;
  if (!view->completion_helper)
    view->completion_helper = std::make_shared<text::completion_helper>(*view);
  auto const helper = view->completion_helper;
  std::uint32_t const memento = view->storage->current_memento;
  bool const goes_on = helper->can_advance();
  bool const found = !goes_on  ? helper->setup(*this, *this)
                     : forward ? helper->next()
                               : helper->previous();
  if (!found || view_ != view || view->storage->current_memento != memento) return false;
  {
    textview::view_will_change const scope(*this, true);
    helper->insert();
  }
  if (goes_on) view->storage->undo_manager.join_last_steps();
  return true;
}

// In overwrite mode the text leaves no blanks.
bool WynTextView::acceptCompletion(std::string const& text) {
  if (text.empty() || view_->is_in_column_mode()) return false;
  textview::view_will_change const scope(*this, true);
  text::view_iterator const caret = view_->selection.first();
  if (caret.offset == 0) {
    text::iterator const start = actions::search_backward(caret, actions::is_not_word_char).base;
    view_->selection.select({view_, start}, view_->selection.last(), false);
  }
  std::u16string const units = unicode::to_utf16(text);
  bool const overwrite_mode = std::exchange(view_->overwrite_mode, false);
  view_->insert(units.begin(), units.end());
  view_->overwrite_mode = overwrite_mode;
  return true;
}

plist::value WynTextView::matchesForString(std::string const& typed) {
  std::u16string const units = unicode::to_utf16(typed);
  if (view_ == nullptr || units.empty()) return plist::array{};
  plist::value const settings = stylesForCaret();
  auto offered = typing::scoped_completions(settings, units, *this);
  if (!offered || view_ == nullptr) return plist::array{};
  text::view_iterator const caret = view_->selection.first();
  text::iterator const start = actions::search_backward(caret, actions::is_not_word_char).base;
  typing::completion_candidates candidates(*view_->storage, start.pos(), units, std::move(*offered),
                                           !typing::disables_words(settings));
  candidates.look_further(std::numeric_limits<std::size_t>::max());
  plist::array result;
  for (platform::completion_row const& row : candidates.rows_for(units))
    result.push_back(unicode::to_utf8(row.text));
  return result;
}
