#include "actions/word_units.h"
#include "text/view.h"
#include "textview/WynTextView.h"
#include "textview/typing_pairs.h"

#include <algorithm>
#include <string>

// Typing brackets and quotes in pairs. What was inserted with an opening unit stays a live pair as
// long as the caret is inside: its closing unit is typed over, and deleting the opening one takes
// both away.

// True if the unit at the caret closes a live pair, which then ends.
bool WynTextView::selectLiveClosing(text::char_t typed) {
  if (view_->has_selection()) return false;
  text::iterator const caret = view_->selection.current_mark.base;
  if (caret == view_->storage->end(caret.line) || *caret != typed) return false;
  auto& live = view_->notify_observer.notifications;
  auto const found = std::find_if(live.begin(), live.end(),
                                  [&](auto const& range) { return range.last() == caret.pos(); });
  if (found == live.end()) return false;
  view_->notify_observer.remove_notify(found);
  view_->selection.select_to({view_, caret + 1}, false);
  return true;
}

// Typed with a selection, an opening unit puts the pair round it: in columns round each row.
bool WynTextView::surroundSelection(text::char_t typed) {
  text::selection const& selection = view_->selection;
  if (!view_->has_selection() || !mayOpenPair(typed)) return false;
  if (selection.column_mode && selection.width() == 0) return false;
  for (unit_pair const pair : pairs_of(pairsAtCaret("smartTypingPairs"))) {
    if (pair.open != typed) continue;
    std::u16string text(1, pair.open);
    text::unit_view const units = selection.units();
    for (std::size_t at = 0; at < units.size(); ++at) {
      bool const ends_row = selection.column_mode && units[at] == u'\n';
      if (ends_row) text += pair.close;
      text += units[at];
      if (ends_row && at + 1 < units.size()) text += pair.open;
    }
    if (!selection.column_mode) text += pair.close;
    view_->replace_selection(text.begin(), text.end());
    return true;
  }
  return false;
}

// An opening unit that was typed gets its closing one, but not in front of a word. A quote that
// makes their number on the line even is a closing one.
void WynTextView::completePair(text::char_t typed) {
  if (view_->has_selection() || !view_->mirror_observer.mirrors.empty()) return;
  if (!mayOpenPair(typed)) return;
  text::iterator const caret = view_->selection.current_mark.base;
  text::unit_view const line = view_->storage->line_units(caret.line);
  if (caret.column < line.size() && is_word_char(line[caret.column])) return;
  for (unit_pair const pair : pairs_of(pairsAtCaret("smartTypingPairs"))) {
    if (pair.open != typed) continue;
    if (pair.open == pair.close && std::count(line.begin(), line.end(), typed) % 2 == 0) return;
    view_->storage->insert(caret, &pair.close, &pair.close + 1);
    view_->selection.set_caret({view_, caret});
    view_->notify_observer.add_notify({caret, caret});
    return;
  }
}

// With the caret in an empty live pair: ends it, and with `both` selects its two units.
void WynTextView::endEmptyPair(bool both) {
  if (view_->has_selection()) return;
  text::iterator const caret = view_->selection.current_mark.base;
  auto& live = view_->notify_observer.notifications;
  auto const found = std::find_if(live.begin(), live.end(), [&](auto const& range) {
    return range.empty() && range.first() == caret.pos();
  });
  if (found == live.end()) return;
  view_->notify_observer.remove_notify(found);
  if (!both || caret.column == 0 || caret == view_->storage->end(caret.line)) return;
  view_->selection.select({view_, caret - 1}, {view_, caret + 1}, false);
}
