#include "textview/pair_typing.h"

#include "actions/word_units.h"
#include "text/view.h"
#include "textview/WynTextView.h"

#include <algorithm>
#include <string>

bool select_live_closing(WynTextView& text_view, text::char_t typed) {
  text::view& view = *text_view.view();
  if (view.has_selection()) return false;
  text::iterator const caret = view.selection.current_mark.base;
  if (caret == view.storage->end(caret.line) || *caret != typed) return false;
  auto& live = view.notify_observer.notifications;
  auto const found = std::find_if(live.begin(), live.end(),
                                  [&](auto const& range) { return range.last() == caret.pos(); });
  if (found == live.end()) return false;
  view.notify_observer.remove_notify(found);
  view.selection.select_to({&view, caret + 1}, false);
  return true;
}

bool surround_selection(WynTextView& text_view, text::char_t typed) {
  text::view& view = *text_view.view();
  text::selection const& selection = view.selection;
  if (!view.has_selection() || !text_view.mayOpenPair(typed)) return false;
  if (selection.column_mode && selection.width() == 0) return false;
  for (unit_pair const pair : text_view.pairsAtCaret("smartTypingPairs")) {
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
    view.replace_selection(text.begin(), text.end());
    return true;
  }
  return false;
}

// A quote that makes their number on the line even is a closing one.
void complete_pair(WynTextView& text_view, text::char_t typed) {
  text::view& view = *text_view.view();
  if (view.has_selection() || !view.mirror_observer.mirrors.empty()) return;
  if (!text_view.mayOpenPair(typed)) return;
  text::iterator const caret = view.selection.current_mark.base;
  text::unit_view const line = view.storage->line_units(caret.line);
  if (caret.column < line.size() && is_word_char(line[caret.column])) return;
  for (unit_pair const pair : text_view.pairsAtCaret("smartTypingPairs")) {
    if (pair.open != typed) continue;
    if (pair.open == pair.close && std::count(line.begin(), line.end(), typed) % 2 == 0) return;
    view.storage->insert(caret, &pair.close, &pair.close + 1);
    view.selection.set_caret({&view, caret});
    view.notify_observer.add_notify({caret, caret});
    return;
  }
}

void end_empty_pair(WynTextView& text_view, bool both) {
  text::view& view = *text_view.view();
  if (view.has_selection()) return;
  text::iterator const caret = view.selection.current_mark.base;
  auto& live = view.notify_observer.notifications;
  auto const found = std::find_if(live.begin(), live.end(), [&](auto const& range) {
    return range.empty() && range.first() == caret.pos();
  });
  if (found == live.end()) return;
  view.notify_observer.remove_notify(found);
  if (!both || caret.column == 0 || caret == view.storage->end(caret.line)) return;
  view.selection.select({&view, caret - 1}, {&view, caret + 1}, false);
}
