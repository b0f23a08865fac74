#include "text/views/selection_history.h"

#include <algorithm>

#include "text/views/view.h"

namespace text {

selection_history::mark selection_history::packed(view_iterator const& it) {
  return {it.base.line, it.base.column, it.offset, it.desired_column};
}

void selection_history::store(undo_key step, selection const& standing) {
  uint32_t const state = std::max(step.from, step.to);
  pages_[state / page_states][state % page_states][step.from < step.to] = {
      packed(standing.first_mark), packed(standing.last_mark), packed(standing.current_mark),
      standing.column_mode, true};
}

selection_history::marks const* selection_history::at(undo_key step) const {
  uint32_t const state = std::max(step.from, step.to);
  auto const page = pages_.find(state / page_states);
  if (page == pages_.end()) return nullptr;
  marks const& found = page->second[state % page_states][step.from < step.to];
  return found.is_known ? &found : nullptr;
}

bool selection_history::contains(undo_key step) const {
  return at(step) != nullptr;
}

std::optional<selection> selection_history::find(undo_key step, view const& view) const {
  marks const* const kept = at(step);
  if (kept == nullptr) return std::nullopt;
  auto const unpacked = [&](mark const& m) {
    return view_iterator(&view, {m.line, m.column, view.storage}, m.offset, m.desired_column);
  };
  selection result;
  result.first_mark = unpacked(kept->first);
  result.last_mark = unpacked(kept->last);
  result.current_mark = unpacked(kept->current);
  result.column_mode = kept->column_mode;
  return result;
}

// A page goes as a whole, so some states beside those two may stay.
void selection_history::forget_between(uint32_t from, uint32_t to) {
  uint32_t const first = from / page_states + 1, last = to / page_states;
  if (first < last) pages_.erase(pages_.lower_bound(first), pages_.lower_bound(last));
}

}  // namespace text
