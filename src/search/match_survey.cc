#include "search/match_survey.h"

#include "platform/desktop.h"
#include "platform/system/free_aside.h"
#include "text/views/view.h"

#include <algorithm>
#include <chrono>

namespace search {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t copied_at_once = 1'000'000;  // units, for which half a millisecond is enough
constexpr double between_pieces = 0.001;           // seconds
constexpr double poll_period = 0.01;               // seconds
constexpr auto silent_wait = 3ms;                  // shorter work is seen with the letter typed
constexpr auto allowed_time = 10s;
constexpr unsigned long allowed_retries = 1'000'000;  // of an attempt: some 10 ms

// Turns offsets that grow into places.
class place_counter {
 public:
  place_counter(text::unit_view text, text::pos first) : text_(text), at_(first) {}
  text::pos at(std::size_t offset) {
    text::unit_view const part = text_.substr(offset_, offset - offset_);
    auto const breaks = static_cast<std::size_t>(std::count(part.begin(), part.end(), u'\n'));
    if (breaks == 0) {
      at_ = {at_.line, at_.column + part.size()};
    } else {
      at_ = {at_.line + breaks, part.size() - part.rfind(u'\n') - 1};
    }
    offset_ = offset;
    return at_;
  }

 private:
  text::unit_view text_;
  std::size_t offset_ = 0;
  text::pos at_;
};

std::string with_separators(std::size_t number) {
  std::string digits = std::to_string(number);
  for (std::size_t at = digits.size(); at > 3;) digits.insert(at -= 3, 1, ',');
  return digits;
}

}  // namespace

// Of an edited text, whose lines stand in many places.
struct match_survey::copied_text {
  std::u16string units;
  std::size_t next_line = 0;
  bool is_complete = false;
};

// What a search that may outlive its owner needs.
struct match_survey::task {
  void run(std::atomic<bool> const& cancelled) {
    text_searcher searcher(*query, units, cancelled);
    searcher.set_limits(std::chrono::steady_clock::now() + allowed_time, allowed_retries);
    bool const is_pattern = query->pattern() != nullptr;
    if (!is_pattern) found.common_length = static_cast<std::uint32_t>(query->literal().size());
    place_counter places(units, first);
    for (std::size_t at = 0; at <= units.size() && !cancelled;) {
      search_end const end = searcher.next(at, units.size());
      if (end == search_end::gave_up) found.stopped = all_places::stop::slow;
      if (end != search_end::found) return;
      if (found.starts.size() == all_places::most) {
        found.stopped = all_places::stop::many;
        return;
      }
      found.starts.push_back(places.at(searcher.begin()));
      if (is_pattern)
        found.lengths.push_back(static_cast<std::uint32_t>(searcher.end() - searcher.begin()));
      at = searcher.end() + (searcher.begin() == searcher.end() ? 1 : 0);
    }
  }

  std::shared_ptr<text_query const> query;
  text::text_slice slice;  // or else
  std::shared_ptr<copied_text const> copy;
  text::unit_view units;
  text::pos first;
  all_places found;
};

std::size_t all_places::next(text::pos at) const {
  if (starts.empty()) return none;
  auto const found = std::lower_bound(starts.begin(), starts.end(), at);
  return found == starts.end() ? 0 : static_cast<std::size_t>(found - starts.begin());
}

std::size_t all_places::selected(text::view const& view) const {
  text::iterator const first = view.selection.first().base, last = view.selection.last().base;
  std::size_t const index = next(first.pos());
  if (index == none || starts[index] != first.pos()) return none;
  // A column beyond the line's end tells soon that there is no such end.
  if (last.line - first.line > length(index)) return none;
  return static_cast<std::size_t>(last - first) == length(index) ? index : none;
}

std::string count_text(all_places const& places, std::size_t current) {
  std::size_t const count = places.starts.size();
  bool const is_all = places.stopped == all_places::stop::none;
  if (count == 0) return is_all ? "No matches" : "";
  std::string const all = with_separators(count) + (is_all ? "" : "+");
  if (current != all_places::none) return with_separators(current + 1) + " of " + all;
  return all + (count == 1 && is_all ? " match" : " matches");
}

std::vector<std::size_t> scroll_ticks(text::view& view, all_places const& places, std::size_t rows,
                                      std::size_t height) {
  std::vector<std::size_t> ticks;
  text::storage const& storage = *view.storage;
  std::size_t const view_rows = view.lines();
  rows = std::max(rows, view_rows);
  auto it = places.starts.begin();
  while (it != places.starts.end() && it->line < storage.lines()) {
    std::size_t const column = std::min<std::size_t>(it->column, storage.size(it->line));
    text::view_iterator const at(&view, text::iterator(it->line, column, view.storage));
    std::size_t const tick = view.line_in_view(at) * height / rows;
    ticks.push_back(tick);
    // The first row that lies at another pixel.
    std::size_t const next_row = ((tick + 1) * rows + height - 1) / height;
    if (next_row >= view_rows) break;
    it = std::lower_bound(it + 1, places.starts.end(), view.begin(next_row).base.pos());
  }
  return ticks;
}

bool match_survey::is_of(text::storage const& storage) const {
  return storage_ == &storage && memento_ == storage.current_memento;
}

void match_survey::stop() {
  timer_.reset();
  work_.reset();
  task_.reset();
  if (copy_ != nullptr && !copy_->is_complete) copy_.reset();
}

void match_survey::clear() {
  stop();
  copy_.reset();
  query_.reset();
  result_.reset();
  storage_ = nullptr;
}

void match_survey::start(text::view& view, std::shared_ptr<text_query const> query,
                         std::optional<text_range> within) {
  stop();
  if (!is_of(*view.storage) || within != within_) copy_.reset();
  storage_ = view.storage;
  memento_ = storage_->current_memento;
  within_ = within;
  query_ = std::move(query);
  if (copy_ != nullptr && copy_->is_complete) return search();
  auto const [first, last] = within_.value_or(text_range(text::pos(), view.storage->end(-1).pos()));
  if (auto borrowed = storage_->borrowed_text(first, last)) {
    task_ = std::make_shared<task>();
    task_->slice = std::move(*borrowed);
    return search();
  }
  copy_ = storage_->length() > copied_at_once ? platform::freed_aside(copied_text())
                                              : std::make_shared<copied_text>();
  copy_->next_line = first.line;
  if (!within_) copy_->units.reserve(storage_->length());
  copy_piece();
}

void match_survey::copy_piece() {
  timer_.reset();
  // The text can't have gone: then the survey has been cleared.
  if (!is_of(*storage_)) return;
  bool const is_hurried = !platform::desktop::current().busy().is_wanted();
  auto const [first, last] = within_.value_or(text_range(text::pos(), storage_->end(-1).pos()));
  std::size_t const begun = copy_->units.size();
  for (std::size_t& line = copy_->next_line; line <= last.line; ++line) {
    if (!is_hurried && copy_->units.size() - begun > copied_at_once) {
      timer_ = platform::desktop::current().loop().schedule(between_pieces, false,
                                                            [this] { copy_piece(); });
      return;
    }
    if (line != first.line) copy_->units.push_back(u'\n');
    text::unit_view const units = storage_->line_units(line);
    std::size_t const from = line == first.line ? first.column : 0;
    std::size_t const to = line == last.line ? last.column : units.size();
    copy_->units.append(units.substr(from, to - from));
  }
  copy_->is_complete = true;
  search();
}

void match_survey::search() {
  if (task_ == nullptr) {
    task_ = std::make_shared<task>();
    task_->copy = copy_;
  }
  task_->query = query_;
  task_->units = copy_ != nullptr ? text::unit_view(copy_->units) : task_->slice.units;
  task_->first = within_ ? within_->first : text::pos();
  if (!platform::desktop::current().busy().is_wanted()) {
    task_->run(false);
    return finish();
  }
  auto const stops = query_->pattern() ? stopping::perhaps_late : stopping::soon;
  work_ = work_aside::begin(stops, [t = task_](auto const& cancelled) { t->run(cancelled); });
  if (work_ == nullptr) {  // nobody is to wait for it here
    task_->found.stopped = all_places::stop::slow;
    return finish();
  }
  bool const is_waiting = platform::desktop::current().waits().is_waiting();
  if (!is_waiting && work_->is_done_within(silent_wait)) return poll();
  timer_ = platform::desktop::current().loop().schedule(poll_period, true, [this] { poll(); });
}

void match_survey::poll() {
  // While something waits nothing may come of it.
  if (platform::desktop::current().waits().is_waiting() || !work_->is_done_within(0ms)) return;
  if (work_->has_failed()) {
    task_->found = {};
    task_->found.stopped = all_places::stop::many;
  }
  timer_.reset();
  work_.reset();
  finish();
}

void match_survey::finish() {
  bool const is_large = task_->found.starts.size() > copied_at_once;
  auto places = std::move(task_->found);
  task_.reset();
  result_ = is_large ? platform::freed_aside(std::move(places))
                     : std::make_shared<all_places>(std::move(places));
  done_();
}

}  // namespace search
