#include "textview/find_highlights.h"

#include <algorithm>

namespace {

constexpr auto allowed_time = std::chrono::milliseconds(8);
constexpr unsigned long allowed_retries = 20000;  // some 0.2 ms for an attempt
constexpr std::size_t longest_part = 50000;       // units that are searched in one piece
constexpr std::size_t margin = 500;               // columns beside what is seen, for long rows

}  // namespace

std::vector<find_highlights::match> const& find_highlights::in_window(
    text::view& view, std::shared_ptr<text_query const> query, window const& seen) {
  if (query == query_ && seen == window_ && view.storage->current_memento == memento_ &&
      view.lines() == rows_)
    return matches_;
  query_ = std::move(query);
  window_ = seen;
  memento_ = view.storage->current_memento;
  rows_ = view.lines();
  matches_.clear();
  deadline_ = std::chrono::steady_clock::now() + allowed_time;
  search(view);
  return matches_;
}

// As one piece, so that a match may stand in several rows; of long rows the part that is seen.
void find_highlights::search(text::view& view) {
  text::iterator const first = view.begin(window_.first_row).base;
  text::iterator const last = view.end(window_.last_row - 1).base;
  if (static_cast<std::size_t>(last - first) <= longest_part) return search_part(first, last);
  auto const at = [&](std::size_t row, std::size_t column) {
    return iter_from_view_pos(&view, row, column, text::freehanded_t::off).base;
  };
  std::size_t const left = window_.first_column - std::min(window_.first_column, margin);
  for (std::size_t row = window_.first_row; row < window_.last_row; ++row)
    search_part(at(row, left), at(row, window_.last_column + margin));
}

void find_highlights::search_part(text::iterator at, text::iterator const& last) {
  std::vector<text::char_t> units;
  text::append_units(at, last, units);
  std::atomic<bool> const never = false;
  text_searcher searcher(*query_, {units.data(), units.size()}, never);
  searcher.set_limits(deadline_, allowed_retries);
  std::size_t seen = 0;
  for (std::size_t from = 0; from <= units.size();) {
    if (std::chrono::steady_clock::now() > deadline_) return;
    if (searcher.next(from, units.size()) != search_end::found) return;
    at += static_cast<std::ptrdiff_t>(searcher.begin() - seen);
    text::iterator const end = at + static_cast<std::ptrdiff_t>(searcher.end() - searcher.begin());
    if (at != end) matches_.emplace_back(at, end);
    at = end;
    seen = searcher.end();
    from = seen + (searcher.begin() == seen ? 1 : 0);
  }
}
