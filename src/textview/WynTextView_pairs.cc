#include "actions/find_start_tag.h"
#include "actions/skip_pair.h"
#include "grammar/tokenize_filter.h"
#include "layout/bracket_marks.h"
#include "layout/geometry.h"
#include "layout/word_marks.h"
#include "styles/typing_settings.h"
#include "styles/view_styles.h"
#include "text/views/view.h"
#include "textview/WynTextView.h"
#include "textview/view_will_change.h"
#include "typing/line_indenter.h"

#include <iterator>
#include <optional>

// Brackets and what they enclose: the partner that is shown, and the block that is selected. Tags
// that are closed.

namespace {

// The opening unit of the pair in which `from` stands; nothing if it isn't after `limit`.
std::optional<text::iterator> opening_before(text::iterator const& from,
                                             text::iterator const& limit, styles::unit_pair pair) {
  bool found = false;
  auto const at =
      actions::skip_pair(std::make_reverse_iterator(from), std::make_reverse_iterator(limit),
                         pair.close, pair.open, found);
  return found ? std::optional(at.base()) : std::nullopt;
}

}  // namespace

void WynTextView::addPairMethods() {
  addMethod("selectBlock:", [this](plist::value const&) { return plist::value(selectBlock()); });
  addMethod("insertClosingTag:",
            [this](plist::value const&) { return plist::value(insertClosingTag()); });
}

std::vector<styles::unit_pair> WynTextView::pairsAtCaret(char const* key) const {
  return styles::pairs_of_settings(stylesForCaretWait(false), key);
}

// A window knows its scopes, and needn't read the settings of all others.
bool WynTextView::mayOpenPair(text::char_t typed) const {
  return isSeen() || styles_->typing().opens_pair(typed);
}

bool WynTextView::mayIndentLines() const {
  if (isSeen() || tokenizer_ == nullptr) return true;
  return styles_->typing().indents(*tokenizer_->all_rules(), tokenizer_->start_rule(), rootScope_);
}

bool WynTextView::dependsOnScope(text::char_t typed) const {
  return (smartTyping_ && mayOpenPair(typed)) ||
         (indenter_->types_at_line_end() && mayIndentLines());
}

// The innermost pair round the selection, with its two units; once more gives the next one out.
bool WynTextView::selectBlock() {
  if (view_ == nullptr) return false;
  text::iterator const first = view_->selection.first().base, last = view_->selection.last().base;
  text::iterator const begin(0, 0, view_->storage), end = view_->end().base;
  std::optional<text::iterator> opening;
  text::iterator after = last;
  for (styles::unit_pair const pair : pairsAtCaret("highlightPairs")) {
    if (pair.open == pair.close) continue;
    auto const candidate = opening_before(first, opening.value_or(begin), pair);
    if (!candidate) continue;
    bool found = false;
    text::iterator const to = actions::skip_pair(last, end, pair.open, pair.close, found);
    if (!found) continue;
    opening = candidate;
    after = to;
  }
  if (!opening) return false;
  textview::view_will_change const scope(*this, true);
  view_->selection.set_caret({view_, *opening});
  view_->selection.select_to(view_->in_view(after), false);
  return true;
}

// Closes the innermost tag that is open at the caret, as if it were typed.
bool WynTextView::insertClosingTag() {
  if (view_ == nullptr) return false;
  text::iterator const caret = view_->selection.current_mark.base;
  auto const [first, last] =
      actions::find_start_tag<text::iterator>()(text::iterator(0, 0, view_->storage), caret);
  if (first == last) return false;
  insertText(u"</" + std::u16string(first, last) + u">");
  return true;
}

void WynTextView::followMarks() {
  if (view_ == nullptr || host_ == nullptr || !isSeen()) return;
  brackets_->follow(matchingBrackets());
  words_->follow(marksSelectedWord());
}

// Looked for no further than it can be seen.
void WynTextView::flashPartner() {
  if (host_ == nullptr) return;
  text::iterator const caret = view_->selection.current_mark.base;
  if (caret.column == 0) return;
  text::iterator const typed = std::prev(caret);
  platform::rect const visible = visibleTextRect();
  std::size_t const top_row = std::min(layout_.row_at(visible.y), view_->lines() - 1);
  text::iterator const top = view_->begin(top_row).base;
  for (styles::unit_pair const pair : pairsAtCaret("highlightPairs")) {
    if (pair.close != *typed || typed < top) continue;
    auto const partner = opening_before(typed, top, pair);
    if (!partner || !view_->is_visible(*partner)) continue;
    platform::point const at = layout::position_of(*this, {view_, *partner});
    platform::rect const r{at.x, at.y, layout_.charWidth(), layout_.lineHeight()};
    if (r.intersects(visible)) flash_.show(r, *host_);
    return;
  }
}
