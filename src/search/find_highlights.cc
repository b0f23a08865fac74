#include "search/find_highlights.h"

#include "search/patient_work.h"

#include <algorithm>
#include <chrono>

namespace search {
namespace {

constexpr auto allowed_time = std::chrono::milliseconds(8);
constexpr auto patience = std::chrono::milliseconds(15);  // with an attempt that goes beyond
constexpr unsigned long allowed_retries = 20000;          // some 0.2 ms for an attempt
constexpr std::size_t longest_part = 50000;               // units that are searched in one piece
constexpr std::size_t margin = 500;  // columns beside what is seen, for long rows

// What is searched may begin and end in the midst of a word.
bool cuts_word(text::iterator const& at) {
  return is_within_word(at.storage->line_units(at.line), at.column);
}

}  // namespace

// A stretch of the text, and where in it the matches are.
struct find_highlights::part {
  std::vector<text::char_t> units;
  std::vector<std::pair<std::size_t, std::size_t>> found;
};

// What a search that may outlive its caller owns.
struct find_highlights::highlight_task {
  void run(std::atomic<bool> const& cancelled) {
    auto const deadline = std::chrono::steady_clock::now() + allowed_time;
    for (part& searched : parts) search(searched, deadline, cancelled);
  }

  std::shared_ptr<text_query const> query;
  std::vector<part> parts;

 private:
  using time_point = std::chrono::steady_clock::time_point;
  void search(part& in, time_point deadline, std::atomic<bool> const& cancelled) const {
    text_searcher searcher(*query, {in.units.data(), in.units.size()}, cancelled);
    searcher.set_limits(deadline, allowed_retries);
    for (std::size_t from = 0; from <= in.units.size();) {
      if (std::chrono::steady_clock::now() > deadline) return;
      if (searcher.next(from, in.units.size()) != search_end::found) return;
      in.found.emplace_back(searcher.begin(), searcher.end());
      from = searcher.end() + (searcher.begin() == searcher.end() ? 1 : 0);
    }
  }
};

std::vector<find_highlights::match> const& find_highlights::in_window(
    text::view& view, std::shared_ptr<text_query const> query, window const& seen,
    std::optional<text_range> within) {
  if (query == query_ && seen == window_ && within == within_ &&
      view.storage->current_memento == memento_ && view.lines() == rows_)
    return matches_;
  query_ = std::move(query);
  within_ = within;
  window_ = seen;
  memento_ = view.storage->current_memento;
  rows_ = view.lines();
  matches_.clear();
  search(view);
  return matches_;
}

// As one piece, so that a match may stand in several rows; of long rows the part that is seen.
void find_highlights::search(text::view& view) {
  auto const task = std::make_shared<highlight_task>();
  task->query = query_;
  text::iterator const first = view.begin(window_.first_row).base;
  text::iterator const last = view.end(window_.last_row - 1).base;
  std::vector<text::iterator> starts;
  auto const add = [&](text::iterator const& from, text::iterator const& to) {
    starts.push_back(from);
    text::append_units(from, to, task->parts.emplace_back().units);
  };
  if (static_cast<std::size_t>(last - first) <= longest_part) {
    add(first, last);
  } else {
    auto const at = [&](std::size_t row, std::size_t column) {
      return iter_from_view_pos(&view, {row, column}, text::freehanded_t::off).base;
    };
    std::size_t const left = window_.first_column - std::min(window_.first_column, margin);
    for (std::size_t row = window_.first_row; row < window_.last_row; ++row)
      add(at(row, left), at(row, window_.last_column + margin));
  }
  if (query_->pattern() == nullptr) {
    task->run(false);
  } else if (!do_briefly(patience, [task](auto const& cancelled) { task->run(cancelled); })) {
    return;
  }
  for (std::size_t i = 0; i < starts.size(); ++i) take(starts[i], task->parts[i]);
}

void find_highlights::take(text::iterator at, part const& searched) {
  std::size_t seen = 0;
  for (auto const& [first, last] : searched.found) {
    at += static_cast<std::ptrdiff_t>(first - seen);
    text::iterator const end = at + static_cast<std::ptrdiff_t>(last - first);
    bool const is_wanted = !within_ || (within_->first <= at.pos() && end.pos() <= within_->second);
    bool const is_part_of_word = query_->whole_words() && (cuts_word(at) || cuts_word(end));
    if (at != end && is_wanted && !is_part_of_word) matches_.emplace_back(at, end);
    at = end;
    seen = last;
  }
}

}  // namespace search
