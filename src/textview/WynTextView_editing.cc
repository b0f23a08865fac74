#include "actions/movement.h"
#include "actions/movement_wrappers.h"
#include "grammar/tokenize_filter.h"
#include "layout/geometry.h"
#include "platform/desktop.h"
#include "platform/utf.h"
#include "search/WynFindManager.h"
#include "settings/store.h"
#include "text/cell_width.h"
#include "text/kill_buffer_guard.h"
#include "text/row_break.h"
#include "text/tab_width.h"
#include "text/views/view.h"
#include "textview/WynTextView.h"
#include "textview/isearch/WynISearchWindow.h"
#include "textview/view_will_change.h"
#include "typing/line_indenter.h"
#include "typing/pair_typing.h"
#include "typing/typing_run.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <mutex>
#include <optional>

// Typing, deleting, and the text of input methods.

namespace {

constexpr char const* tab_shifts_key = "WynTextViewTabShiftsLines";

// Turns a caret in virtual columns into one between two units.
void make_caret_real(text::view& view) {
  if (!view.has_selection() && !view.is_in_column_mode())
    view.selection.set_caret({&view, make_base_iter(view.selection.current_mark)});
}

// How many characters `text` is after the caret: none where it only adds to the one before.
std::size_t characters_typed(text::view const& view, std::u16string_view text) {
  text::iterator const caret = view.selection.current_mark.base;
  text::unit_view const line = view.storage->line_units(caret.line);
  std::size_t const before = text::previous_cluster(line, caret.column);
  std::u16string const joined =
      std::u16string(line.substr(before, caret.column - before)).append(text);
  std::size_t count = 0;
  for (std::size_t at = 0; at < joined.size(); at = unicode::cluster_at(joined, at).end)
    if (at >= caret.column - before) ++count;
  return count;
}

// Selects as many characters ahead of the caret as will be typed over it, within its line.
void select_characters_ahead(text::view& view, std::size_t count) {
  text::iterator ahead = view.selection.current_mark.base;
  text::unit_view const line = view.storage->line_units(ahead.line);
  for (; count > 0 && ahead.column < line.size(); --count)
    ahead.column = static_cast<std::uint32_t>(text::next_cluster(line, ahead.column));
  view.selection.select_to({&view, ahead}, false);
}

// Typing in overwrite mode takes the place of what it covers, where erasing blanks it.
class plain_erasing {
 public:
  explicit plain_erasing(text::view& view) : view_(view), mode_(view.overwrite_mode) {
    view_.overwrite_mode = false;
  }
  ~plain_erasing() { view_.overwrite_mode = mode_; }

 private:
  text::view& view_;
  bool mode_;
};

// The last blank that leaves what precedes it no wider than `width` columns. Nothing when the line
// is no wider, or has only indentation there, or no blank at all.
std::optional<std::size_t> last_blank_within(text::unit_view line, std::size_t width,
                                             std::size_t tab_size) {
  std::size_t const first_word = line.find_first_not_of(u" \t");
  std::optional<std::size_t> found;
  std::size_t column = 0;
  for (std::size_t unit = 0, end; unit < line.size() && column <= width; unit = end) {
    if (unit > first_word && text::is_lone_blank(line, unit)) found = unit;
    end = unicode::cluster_at(line, unit).end;
    column +=
        text::expanded_width(line.substr(unit, end - unit), column, text::tab_stops(tab_size));
  }
  return column > width ? found : std::nullopt;
}

}  // namespace

void WynTextView::addEditingMethods() {
  addMethod("insertText:", [this](plist::value const& text) {
    if (view_ == nullptr) return plist::value(false);
    insertText(text);
    return plist::value();
  });
  addMethod("deleteBackward:", [this](plist::value const&) {
    return deleteTyped(typing::key_kind::deletion_backward);
  });
  addMethod("deleteForward:", [this](plist::value const&) {
    return deleteTyped(typing::key_kind::deletion_forward);
  });
  addAction("deleteToEndOfParagraph:", [this] { deleteToEndOfParagraph(); });
  addAction("insertNewline:", [this] { insertNewline(); });
  addMethod("insertTab:", [this](plist::value const&) {
    if (view_ == nullptr) return plist::value(false);
    insertTab();
    return plist::value();
  });
  addMethod("insertBacktab:", [this](plist::value const&) {
    if (view_ == nullptr) return plist::value(false);
    insertBacktab();
    return plist::value();
  });
  addMethod("toggleComment:", [this](plist::value const&) {
    if (view_ == nullptr) return plist::value(false);
    textview::view_will_change const scope(*this, true);
    return plist::value(actions::toggle_comments(*view_, commentMarkers()));
  });
  addAction("indent:", [this] { indenter_->indent_selected_lines(); });
  addAction("cancel:", [this] {
    if (WynFindManager::sharedInstance().closeFindPanel()) return;
    if (view_->has_selection()) view_->selection.set_caret(view_->selection.current_mark);
  });
}

void WynTextView::insertText(std::u16string_view text) {
  if (view_ == nullptr) return;
  if (isRecordingMacro()) recordMacroCommand("insertText:", unicode::to_utf8(text));
  recording_suspended const unrecorded(*this);
  abandonMarkedText();
  typing::typed_key const key(typingRun_, *view_, typing::key_kind::insertion, text);
  bool const smart = smartTyping_ && text.size() == 1;
  // The scope that decides is that before what is typed, so none is made again meanwhile. A
  // macro must do the same each time; who types must not be kept waiting.
  std::unique_lock scopes_stay(view_->storage->mutex, std::defer_lock);
  if (text.size() == 1 && tokenizer_ != nullptr && dependsOnScope(text.front())) {
    if (!isSeen())
      tokenizer_->wait_for(view_->selection.current_mark.base.line, std::chrono::hours(1));
    scopes_stay.lock();
  }
  textview::view_will_change const scope(*this, true);
  make_caret_real(*view_);
  bool const may_close =
      (text.size() == 1 || text.starts_with(u"</")) && indenter_->may_close_block();
  bool const closes = smart && typing::select_live_closing(*this, text.front());
  if (smart && !closes && typing::surround_selection(*this, text.front())) return;
  auto const opened = smart && !closes ? typing::opened_pair(*this, text.front()) : std::nullopt;
  insertTyped(text, closes);
  if (opened) typing::complete_pair(*this, *opened);
  if (may_close) indenter_->indent_closing_line(text.size());
}

// In overwrite mode what is typed takes the place of as many characters, or of what is selected.
void WynTextView::insertTyped(std::u16string_view text, bool closes) {
  if (!overwriteMode_) {
    view_->insert(text.begin(), text.end());
    if (hardWrap()) breakTypedLine();
    return;
  }
  if (!closes) {
    view_->erase_selection();
    make_caret_real(*view_);
    select_characters_ahead(*view_, characters_typed(*view_, text));
  }
  plain_erasing const plain(*view_);
  view_->insert(text.begin(), text.end());
}

// Breaks the line at the last white space that leaves the row no wider than the margin, as long as
// the word typed reaches beyond. What is typed on several lines at once stays on them.
void WynTextView::breakTypedLine() {
  text::storage& storage = *view_->storage;
  if (!view_->mirror_observer.mirrors.empty()) return;
  text::iterator const caret = view_->selection.current_mark.base;
  text::unit_view const line = storage.line_units(caret.line).substr(0, caret.column);
  if (line.empty() || text::is_blank(line.back())) return;
  text::replacement::range_list breaks;
  std::size_t row = 0;
  while (auto const blank = last_blank_within(line.substr(row), wrapColumns(), tabSize())) {
    breaks.push_back({static_cast<std::uint32_t>(row + *blank), 1, 1});
    row += *blank + 1;
  }
  if (breaks.empty()) return;
  constexpr std::u16string_view newline = u"\n";
  if (breaks.size() == 1) {
    text::iterator const at(caret.line, breaks.front().offset, &storage);
    storage.erase(at, at + 1);
    storage.insert(at, newline.begin(), newline.end());
  } else {  // a long line from elsewhere: one by one each break would copy the rest of it
    text::iterator const begin = storage.begin_of_line(caret.line);
    storage.replace(
        text::replacement::make(begin.pos(), storage.slice(begin, caret), breaks, newline, true));
  }
  view_->selection.set_caret(
      {view_, text::iterator(caret.line + breaks.size(), caret.column - row, &storage)});
}

// As the scope at the first selected character says; of each pair the start has to be there.
std::vector<actions::comment_marker> WynTextView::commentMarkers() const {
  text::iterator at = view_->selection.first().base;
  text::unit_view const line = view_->storage->line_units(at.line);
  std::size_t const content = std::min(line.find_first_not_of(u" \t"), line.size());
  at.column = std::max(at.column, static_cast<std::uint32_t>(content));
  if (tokenizer_ != nullptr) tokenizer_->wait_for(at.line, std::chrono::hours(1));
  std::map<std::string, std::string> values;
  for (plist::value const& variable :
       stylesForContext(graphPathForIterator(at))["shellVariables"].elements())
    values.emplace(variable["name"].string_or(""), variable["value"].string_or(""));
  std::vector<actions::comment_marker> result;
  for (char const* suffix : {"", "_2", "_3"}) {
    std::string const start = values[std::string("QN_COMMENT_START") + suffix];
    if (!start.empty())
      result.push_back({unicode::to_utf16(start),
                        unicode::to_utf16(values[std::string("QN_COMMENT_END") + suffix])});
  }
  return result;
}

void WynTextView::insertText(plist::value const& text) {
  insertText(unicode::to_utf16(text.string_or("")));
}

plist::value WynTextView::deleteTyped(typing::key_kind kind) {
  if (view_ == nullptr) return false;
  typing::typed_key const key(typingRun_, *view_, kind);
  textview::view_will_change const scope(*this, true);
  kind == typing::key_kind::deletion_backward ? deleteBackward() : deleteForward();
  return {};
}

void WynTextView::deleteBackward() {
  bool const had_selection = view_->has_selection();
  text::kill_buffer_guard const guard(*view_->storage, !had_selection);
  if (smartTyping_) typing::end_empty_pair(*this, true);
  if (!view_->has_selection()) actions::select_for_deletion(view_, actions::left);
  view_->erase_selection();
}

void WynTextView::deleteForward() {
  bool const had_selection = view_->has_selection();
  text::kill_buffer_guard const guard(*view_->storage, !had_selection);
  typing::end_empty_pair(*this, false);
  if (!had_selection) actions::select_for_deletion(view_, actions::right);
  view_->erase_selection();
}

void WynTextView::deleteToEndOfParagraph() {
  text::view& view = *view_;
  if (!view.has_selection()) {
    text::iterator const caret = view.selection.current_mark.base;
    text::iterator target = view.storage->end(caret.line);
    if (caret == target && caret.line + 1 < view.storage->lines())
      target = view.storage->begin_of_line(caret.line + 1);
    view.selection.select_to(view.in_view(target), false);
  }
  view.erase_selection();
  view.scroll_caret_pending = true;
}

void WynTextView::insertNewline() {
  indenter_->insert_newline();
}

void WynTextView::insertTab() {
  // What a macro was recorded with has its own steps.
  if (macroDepth_ == 0 && expandCodeSnippet()) return;
  text::selection const& selection = view_->selection;
  bool const has_lines = view_->has_selection() && !selection.column_mode &&
                         selection.first().base.line != selection.last().base.line;
  if (has_lines && settings::store().boolean(tab_shifts_key)) {
    performSelectorWithObject("shiftRight:", {});
    return;
  }
  recordMacroCommand("insertTab:", {});
  textview::view_will_change const scope(*this, true);
  insertPlainTab();
}

void WynTextView::insertBacktab() {
  if (runningSnippet() == nullptr) {
    performSelectorWithObject("shiftLeft:", {});
    return;
  }
  recordMacroCommand("previousSnippetField:", {});
  goToSnippetField(false);
}

// A soft tab is as many spaces as reach the next tab stop.
void WynTextView::insertPlainTab() {
  std::u16string text = u"\t";
  if (softTabs()) {
    std::size_t const column = column_before_wrap(view_->selection.first());
    text.assign(tabSize() - column % tabSize(), u' ');
  }
  view_->insert(text.begin(), text.end());
}

// Input methods

void WynTextView::insert_text(std::u16string_view text) {
  markedText_.clear();
  auto const late = std::exchange(abandoned_, std::nullopt);
  if (iSearchWindow_ != nullptr) return iSearchWindow_->insertText(text);
  if (late && view_ != nullptr && !isRecordingMacro() && late->text == text &&
      late->memento == view_->storage->current_memento)
    return insertElsewhere(late->at, text);
  insertText(text);
}

// The selection stays what it is; `text` is within a line.
void WynTextView::insertElsewhere(text::pos at, std::u16string_view text) {
  textview::view_will_change const scope(*this, true);
  text::selection kept = view_->selection.without_text();
  view_->storage->insert(text::iterator(at.line, at.column, view_->storage), text.begin(),
                         text.end());
  for (text::view_iterator* const mark : {&kept.first_mark, &kept.last_mark, &kept.current_mark})
    if (mark->base.line == at.line && mark->base.column >= at.column)
      mark->base.column += static_cast<std::uint32_t>(text.size());
  view_->selection = kept;
}

void WynTextView::set_marked_text(std::u16string_view text, std::size_t offset,
                                  std::size_t length) {
  if (view_ == nullptr) return;
  if (!text.empty()) abandoned_.reset();
  markedText_ = text;
  markedCaret_ = std::min(offset + length, text.size());
  showCaret();
  std::size_t const row = view_->line_in_view(layout::marked_text_place(*view_));
  setNeedsDisplayOfLines(row, row + 1);
}

void WynTextView::unmark_text() {
  if (markedText_.empty()) return;
  insert_text(std::u16string(markedText_));
}

void WynTextView::replace_surrounding_text(std::ptrdiff_t offset, std::size_t length,
                                           std::u16string_view text) {
  if (view_ == nullptr) return;
  if (iSearchWindow_ != nullptr) return insert_text(text);  // what is composed is no text yet
  textview::view_will_change const scope(*this, true);
  markedText_.clear();
  text::iterator const caret = layout::marked_text_place(*view_).base;
  auto const end = static_cast<std::ptrdiff_t>(view_->storage->size(caret.line));
  auto const from = std::clamp<std::ptrdiff_t>(caret.column + offset, 0, end);
  auto const to = std::min(from + static_cast<std::ptrdiff_t>(length), end);
  if (from != to) {
    text::iterator const line = view_->storage->begin_of_line(caret.line);
    view_->selection.set_caret({view_, line + from});
    view_->selection.select_to({view_, line + to}, false);
    view_->erase_selection();
  }
  if (!text.empty()) insert_text(text);
}

// An input method that is reset may hand over what was composed, some time later.
void WynTextView::abandonMarkedText() {
  if (markedText_.empty()) return;
  bool const is_line = markedText_.find(u'\n') == markedText_.npos;
  if (view_ != nullptr && iSearchWindow_ == nullptr && is_line)
    abandoned_ = {markedText_, layout::marked_text_place(*view_).base.pos(),
                  view_->storage->current_memento};
  markedText_.clear();
  setNeedsDisplay();
  if (host_ != nullptr) host_->input_method_changed(true);
}

double WynTextView::markedTextOffset() const {
  std::u16string_view const before = std::u16string_view(markedText_).substr(0, markedCaret_);
  return static_cast<double>(text::expanded_width(before, 0, text::tab_stops(tabSize()))) *
         layout_.charWidth();
}

std::u16string WynTextView::selected_text() const {
  if (view_ == nullptr) return {};
  return {view_->selection.begin(), view_->selection.end()};
}

// Input methods want context, not megabytes: at most a thousand units round the caret.
platform::caret_context WynTextView::text_around_caret() const {
  if (view_ == nullptr) return {};
  constexpr std::size_t context = 500;
  text::selection const& selection = view_->selection;
  text::iterator const caret = selection.current_mark.base;
  text::unit_view const line = view_->storage->line_units(caret.line);
  std::size_t first = caret.column - std::min<std::size_t>(caret.column, context);
  std::size_t last = std::min<std::size_t>(line.size(), caret.column + context);
  if (unicode::splits_pair(line, first)) ++first;
  if (unicode::splits_pair(line, last)) --last;
  text::iterator const begun = selection.current_mark == selection.first_mark
                                   ? selection.last_mark.base
                                   : selection.first_mark.base;
  std::size_t anchor = std::clamp<std::size_t>(begun.column, first, last);
  if (begun.line != caret.line) anchor = begun.line < caret.line ? first : last;
  return {std::u16string(line.substr(first, last - first)), caret.column - first, anchor - first};
}
