#include "styles/symbol_list.h"

#include <algorithm>

#include "platform/desktop.h"
#include "styles/styled_view.h"
#include "text/views/view.h"

namespace styles {
namespace {

constexpr double rest = 0.5;        // seconds without a change before the list is made again
constexpr double first_wait = 0.1;  // seconds after a document is shown
constexpr double between_slices = 0.002;
// Of the walk: what isn't felt at a key press, and in between two of them.
constexpr std::size_t steps_at_once = 100000, steps_of_slice = 300000;

}  // namespace

symbol_list::symbol_list(styled_view& text_view) : text_view_(text_view) {}

void symbol_list::build() {
  walk_.reset();
  symbol_walk whole(text_view_);
  whole.go_on(~std::size_t{0});
  take(whole);
}

void symbol_list::take(symbol_walk& finished) {
  memento_ = finished.memento();
  if (finished.symbols == items_) return;
  items_ = std::move(finished.symbols);
  text_view_.symbolsDidChange();
}

void symbol_list::restart() {
  clear();
  is_quick_ = true;
  text_view_.symbolsDidChange();
  build_after(first_wait);
}

// Walks all tokens, so while those change it waits until the user rests. Where only the caret has
// moved the list stands.
void symbol_list::update(bool changed) {
  if (text_view_.view() == nullptr) return;
  bool const stands = memento_ == text_view_.view()->storage->current_memento;
  if (!changed && (stands || timer_ != nullptr)) return set_current(at_caret());
  walk_.reset();
  if (changed || !is_quick_ || !walk(steps_at_once)) build_after(rest);
}

void symbol_list::build_after(double seconds) {
  walk_.reset();
  timer_ = platform::desktop::current().loop().schedule(seconds, false, [this] { walk_slice(); });
}

// True when the list is there.
bool symbol_list::walk(std::size_t steps) {
  bool const is_first = !walk_;
  if (is_first) walk_.emplace(text_view_);
  bool const is_done = walk_->go_on(steps);
  is_quick_ = is_done && is_first && steps <= steps_at_once;
  if (!is_done) return false;
  timer_.reset();
  take(*walk_);
  walk_.reset();
  set_current(at_caret());
  return true;
}

void symbol_list::walk_slice() {
  timer_.reset();
  if (text_view_.view() == nullptr) return;
  if (walk_ && walk_->memento() != text_view_.view()->storage->current_memento)
    return build_after(rest);
  if (walk(walk_ ? steps_of_slice : steps_at_once)) return;
  timer_ =
      platform::desktop::current().loop().schedule(between_slices, false, [this] { walk_slice(); });
}

void symbol_list::clear() {
  timer_.reset();
  walk_.reset();
  items_.clear();
  current_.clear();
}

std::string symbol_list::at_caret() const {
  std::size_t const line = text_view_.view()->selection.current_mark.base.line + std::size_t{1};
  auto const after = std::partition_point(items_.begin(), items_.end(),
                                          [&](symbol const& each) { return each.line <= line; });
  if (after == items_.begin()) return items_.empty() ? "" : "No Symbol";
  return std::prev(after)->name;
}

void symbol_list::set_current(std::string const& name) {
  if (name == current_) return;
  current_ = name;
  text_view_.currentSymbolDidChange(name);
}

}  // namespace styles
