#include "textview/WynCompletionManager.h"

#include "actions/word_units.h"
#include "layout/geometry.h"
#include "platform/desktop.h"
#include "platform/utf.h"
#include "text/views/view.h"
#include "textview/WynTextView.h"
#include "typing/completion_candidates.h"
#include "typing/scoped_completions.h"

#include <algorithm>

namespace {

constexpr std::size_t units_at_once = 1 << 21;  // some milliseconds: before the list is shown
constexpr std::size_t units_of_slice = 1 << 18;
constexpr double between_slices = 0.002;  // seconds

}  // namespace

WynCompletionManager::WynCompletionManager() = default;
WynCompletionManager::~WynCompletionManager() = default;

// Never destroyed: views may outlive what is destroyed at the end.
WynCompletionManager& WynCompletionManager::sharedInstance() {
  static WynCompletionManager& instance = *new WynCompletionManager;
  return instance;
}

platform::completion_list* WynCompletionManager::list() const {
  return view_ == nullptr || view_->host() == nullptr ? nullptr : view_->host()->completions();
}

bool WynCompletionManager::open(WynTextView& view) {
  close();
  if (view.view() == nullptr || !view.isSeen() || view.host() == nullptr ||
      view.host()->completions() == nullptr)
    return false;
  text::view const& text = *view.view();
  text::view_iterator const caret = text.selection.current_mark;
  if (text.has_selection() || text.is_in_column_mode() || caret.offset != 0) return false;
  text::iterator const start = actions::search_backward(caret, actions::is_not_word_char).base;
  if (start == caret.base) return false;
  std::u16string const typed(start, caret.base);
  plist::value const settings = view.stylesForCaret();
  auto offered = typing::scoped_completions(settings, typed, view);
  if (!offered || view.view() != &text) return false;
  view_ = &view;
  start_ = start.pos();
  lines_ = text.storage->lines();
  typed_ = typed;
  candidates_ = std::make_unique<typing::completion_candidates>(
      *text.storage, start_, typed, std::move(*offered), !typing::disables_words(settings));
  candidates_->look_further(units_at_once);
  if (!candidates_->is_complete())
    timer_ = platform::desktop::current().loop().schedule(between_slices, true, [this] { find(); });
  list()->clicked = [this](std::size_t row) { accept(row); };
  show();
  return view_ != nullptr;
}

void WynCompletionManager::close() {
  timer_.reset();
  if (auto* const shown = list()) {
    shown->hide_rows();
    shown->clicked = nullptr;
  }
  view_ = nullptr;
  candidates_.reset();
  rows_.clear();
  selected_ = 0;
}

void WynCompletionManager::closeFor(WynTextView const& view) {
  if (isOpenFor(view)) close();
}

// A slice of the text. The list grows at its end, or where abbreviations are.
void WynCompletionManager::find() {
  std::u16string typed;
  if (!followsWord(typed)) return close();
  candidates_->look_further(units_of_slice);
  if (candidates_->is_complete()) timer_.reset();
  show();
}

// Closes when there is nothing, and nothing can come. The selected row stays the one it is.
void WynCompletionManager::show() {
  auto rows = candidates_->rows_for(typed_);
  if (rows.empty() && candidates_->is_complete()) return close();
  if (selected_ > 0) {
    std::u16string const selected = rows_[selected_].text;
    auto const found = std::find_if(rows.begin(), rows.end(),
                                    [&](auto const& row) { return row.text == selected; });
    selected_ = found == rows.end() ? 0 : static_cast<std::size_t>(found - rows.begin());
  }
  rows_ = std::move(rows);
  if (rows_.empty()) return list()->hide_rows();
  text::iterator const start(start_, view_->view()->storage);
  platform::point const at = layout::position_of(*view_, {view_->view(), start});
  platform::rect const caret = layout::caret_rectangle(*view_);
  list()->show_rows(rows_, selected_,
                    {at.x, at.y, std::max(caret.x - at.x, 1.0), view_->layout().lineHeight()});
}

// Whether the caret stands in the same word, and what is before it.
bool WynCompletionManager::followsWord(std::u16string& typed) const {
  text::view const& text = *view_->view();
  text::view_iterator const caret = text.selection.current_mark;
  if (text.has_selection() || text.is_in_column_mode() || caret.offset != 0 ||
      text.storage->lines() != lines_ || caret.base.line != start_.line)
    return false;
  text::iterator const start = actions::search_backward(caret, actions::is_not_word_char).base;
  typed = std::u16string(start, caret.base);
  return start.pos() == start_ && !typed.empty() && typed.front() == typed_.front();
}

void WynCompletionManager::follow(WynTextView const& view) {
  if (!isOpenFor(view)) return;
  std::u16string typed;
  if (!followsWord(typed)) return close();
  if (typed != typed_) selected_ = 0;
  typed_ = typed;
  show();
}

bool WynCompletionManager::sendEvent(WynTextView const& view, platform::key_event const& event) {
  namespace key = platform::function_key;
  namespace mod = platform::modifier;
  if (!isOpenFor(view) || rows_.empty() || event.characters.size() != 1 ||
      (event.modifiers & (mod::shift | mod::control | mod::option | mod::command)) != 0)
    return false;
  switch (event.characters.front()) {
    case key::up:
      if (selected_ > 0) list()->select_row(--selected_);
      return true;
    case key::down:
      if (selected_ + 1 < rows_.size()) list()->select_row(++selected_);
      return true;
    case key::tab:
    case key::return_key:
    case key::enter:
      accept(selected_);
      return true;
    case key::escape:
      close();
      return true;
    default:
      return false;
  }
}

void WynCompletionManager::accept(std::size_t row) {
  if (view_ == nullptr || row >= rows_.size()) return;
  WynTextView& view = *view_;
  plist::value const text = unicode::to_utf8(rows_[row].text);
  close();
  view.performSelectorWithObject("acceptCompletion:", text);
}
