#include "search/live_find.h"

#include "platform/desktop.h"
#include "text/views/view.h"

namespace search {
namespace {

constexpr double rest_after_change = 0.15;  // seconds

text_range selection_of(text::view const& view) {
  return {view.selection.first().base.pos(), view.selection.last().base.pos()};
}

}  // namespace

live_find::live_find(std::function<void()> changed)
    : changed_(std::move(changed)), survey_([this] { surveyDone(); }) {}

void live_find::seek(searched_view& view, std::shared_ptr<text_query const> query, bool select) {
  text::view* const shown = view.view();
  if (shown == nullptr || query == nullptr) return stop();
  bool const has_scope = view.findScope().has_value();
  bool const is_same = view_ == &view && query_ == query && survey_.is_of(*shown->storage) &&
                       hasScope_ == has_scope && rest_ == nullptr;
  if (view_ != nullptr && view_ != &view) stop();
  view_ = &view;
  query_ = std::move(query);
  hasScope_ = has_scope;
  if (is_same) return;
  if (select && !view.isRecordingMacro()) {
    bool const continues =
        selected_ == selection_of(*shown) && beforeMemento_ == shown->storage->current_memento;
    if (!continues) before_ = selection_of(*shown);
    if (!continues && shown->selection.column_mode) before_.second = before_.first;
    beforeMemento_ = shown->storage->current_memento;
    selects_ = true;
  }
  start();
}

void live_find::start() {
  rest_.reset();
  survey_.start(*view_->view(), query_, view_->findScope());
}

void live_find::stop() {
  searched_view* const former = view_;
  rest_.reset();
  survey_.clear();
  view_ = nullptr;
  query_.reset();
  selects_ = false;
  selected_.reset();
  count_.clear();
  if (former != nullptr && former->view() != nullptr) former->ticksDidChange();
  changed_();
}

void live_find::forget(searched_view const& view) {
  if (view_ == &view) stop();
}

// A text that changes is searched again when it rests.
void live_find::follow(searched_view& view) {
  if (view_ != &view || view.view() == nullptr) return;
  if (survey_.is_of(*view.view()->storage)) return updateCount();
  survey_.stop();
  selects_ = false;
  if (!platform::desktop::current().busy().is_wanted()) return start();
  rest_ = platform::desktop::current().loop().schedule(rest_after_change, false, [this] {
    rest_.reset();
    if (view_ != nullptr && view_->view() != nullptr) start();
  });
}

void live_find::surveyDone() {
  text::storage const& storage = *view_->view()->storage;
  if (selects_ && survey_.is_of(storage) && beforeMemento_ == storage.current_memento)
    selectNext(*survey_.result());
  selects_ = false;
  view_->ticksDidChange();
  updateCount();
}

void live_find::selectNext(all_places const& places) {
  selects_ = false;
  std::size_t const index = places.next(before_.first);
  if (index == all_places::none) return;
  text::iterator const first(places.starts[index], view_->view()->storage);
  text::iterator const last = first + static_cast<std::ptrdiff_t>(places.length(index));
  selected_ = text_range(first.pos(), last.pos());
  if (selected_ != selection_of(*view_->view())) view_->showMatch(first.pos(), last.pos());
}

bool live_find::takeOver(searched_view& view) {
  if (!selects_ || view_ != &view) return false;
  selects_ = false;
  view.showMatch(before_.first, before_.first);
  return true;
}

std::optional<text_range> live_find::selectionBefore(searched_view& view) const {
  if (view_ != &view || selected_ != selection_of(*view.view()) ||
      beforeMemento_ != view.view()->storage->current_memento)
    return std::nullopt;
  return before_;
}

void live_find::updateCount() {
  bool const is_known = survey_.result() != nullptr && !survey_.is_under_way() &&
                        survey_.is_of(*view_->view()->storage);
  if (is_known) {
    all_places const& places = *survey_.result();
    count_ = count_text(places, places.selected(*view_->view()));
  }
  changed_();
}

std::string live_find::note() const {
  if (survey_.result() == nullptr || survey_.is_under_way()) return {};
  switch (survey_.result()->stopped) {
    case all_places::stop::slow:
      return "Counting stopped: the pattern takes too long";
    case all_places::stop::many:
      return "Counting stopped: there are too many matches";
    default:
      return {};
  }
}

std::vector<std::size_t> live_find::ticks(searched_view const& view, std::size_t rows,
                                          std::size_t height) const {
  if (view_ != &view || survey_.result() == nullptr || height == 0) return {};
  return scroll_ticks(*view_->view(), *survey_.result(), rows, height);
}

}  // namespace search
