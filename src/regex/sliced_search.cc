#include "regex/sliced_search.h"

#include <algorithm>

#include "regex/onig_library.h"

namespace oniguruma {

using namespace regex::onig_library;
using clock = std::chrono::steady_clock;

namespace {

constexpr std::chrono::milliseconds longest_slice(150);

/// Decides before each attempt whether the search continues.
class ticker final : public attempt_observer {
 public:
  ticker(OnigUChar const* first, OnigUChar const* last, clock::time_point started)
      : first_(first), last_(last), started_(started) {}

  bool before_attempt(OnigUChar const* start) override {
    // The first attempt is always made, so that each slice gets on.
    if (start <= last_ && (start == first_ || --until_look_ > 0 || in_time())) return true;
    stopped_at_ = start;
    return false;
  }
  /// Null if it was not the ticker that ended the search.
  OnigUChar const* stopped_at() const { return stopped_at_; }

 private:
  bool in_time() {
    auto const now = clock::now();
    // The way to the first attempt may have been long, and is gone again after each stop.
    if (end_ == clock::time_point()) {
      clock::duration const worth = std::min<clock::duration>(8 * (now - started_), longest_slice);
      end_ = now + std::max<clock::duration>(sliced_search::slice, worth);
    }
    bool const quick = now - looked_ < std::chrono::microseconds(200);
    stride_ = quick ? std::min(stride_ * 2, 4096) : 1;
    until_look_ = stride_;
    looked_ = now;
    return now < end_;
  }

  OnigUChar const* first_;
  OnigUChar const* last_;
  clock::time_point started_, looked_, end_;
  int stride_ = 1, until_look_ = 1;
  OnigUChar const* stopped_at_ = nullptr;
};

// Of lines that are searched without a look at the clock.
constexpr std::size_t max_line = 500, max_lines_size = 1 << 15;  // units; some 10 ms at the worst
constexpr unsigned long lines_retries = 200'000;

constexpr unsigned long anchored_retries = 100'000'000;

/// Stops where the first attempt would be made.
class scout final : public attempt_observer {
 public:
  bool before_attempt(OnigUChar const*) override { return false; }
};

}  // namespace

sliced_search::sliced_search(regex::valid_text const& text, ptrn_t const& ptrn, std::size_t first,
                             std::size_t last, direction where, unsigned long retries)
    : text_(text), ptrn_(ptrn), first_(first), last_(last), where_(where), retries_(retries) {
  if (text_.splits_pair(first_)) ++first_;
  if (!ptrn.regex() || first_ > last_) state_ = search_state::not_found;
  if (text.size() > max_bytes / 2) state_ = search_state::gave_up;
}

search_state sliced_search::step() {
  if (state_ != search_state::more) return state_;
  if (!ptrn_.ticking_regex()) {
    // With \G there is but one attempt, where the search begins.
    return state_ = run_at_once(where_ == direction::forward ? first_ : last_, last_);
  }
  return state_ = where_ == direction::forward ? run(first_, last_) : step_backward();
}

search_state sliced_search::run_at_once(std::size_t first, std::size_t last) {
  auto const retries = retries_ ? retries_ : anchored_retries;
  return search_plainly(first, last, text_.size(), retries);
}

// As if the text ended at `end`; what begins there counts only if it does.
search_state sliced_search::search_plainly(std::size_t first, std::size_t last, std::size_t end,
                                           unsigned long retries) {
  OnigUChar const* const begin = bytes(text_.data());
  OnigRegion* const region = onig_region_new();
  match_t const match(region);
  int const found =
      search_briefly(ptrn_.regex(), begin, begin + 2 * end, begin + 2 * first, region, retries);
  if (gave_up(found)) return search_state::gave_up;
  if (found < 0) return search_state::not_found;
  auto const at = static_cast<std::size_t>(found) / 2;
  if (at > last || (at == end && end < text_.size())) return search_state::not_found;
  match_ = match;
  return search_state::found;
}

search_state sliced_search::run(std::size_t& first, std::size_t last) {
  bool const by_lines = ptrn_.stays_in_line() && where_ == direction::forward && !retries_;
  if (!by_lines || first < watched_until_) return run_watched(first, last);
  auto const until = clock::now() + slice;
  for (;;) {
    std::size_t const end = end_of_lines(first);
    if (end == first && first < text_.size()) break;
    search_state const state = run_by_lines(first, last, end);
    if (state == search_state::gave_up) {
      watched_until_ = end;
      break;
    }
    if (state != search_state::more || clock::now() > until) return state;
  }
  return run_watched(first, last);
}

// Where a stretch of whole lines from `first` on ends; `first` itself where the line is too long.
std::size_t sliced_search::end_of_lines(std::size_t first) {
  std::size_t const wanted = first + lines_size_;
  lines_size_ = std::min(2 * lines_size_, max_lines_size);
  std::size_t end = first;
  while (end < wanted) {
    std::u16string_view const line = text_.units().substr(end, max_line);
    auto newline = line.rfind(u'\n', wanted - end - 1);
    if (newline == line.npos) newline = line.find(u'\n');
    if (newline == line.npos) return line.size() < max_line ? text_.size() : end;
    end += newline + 1;
  }
  return end;
}

search_state sliced_search::run_by_lines(std::size_t& first, std::size_t last, std::size_t until) {
  auto const state = search_plainly(first, last, until, lines_retries);
  if (state != search_state::not_found || until > last || until == text_.size()) return state;
  first = until;
  return search_state::more;
}

search_state sliced_search::run_watched(std::size_t& first, std::size_t last) {
  OnigUChar const* const begin = bytes(text_.data());
  OnigUChar const* const end = begin + 2 * text_.size();
  ticker watch(begin + 2 * first, begin + 2 * last, clock::now());
  OnigRegion* const region = onig_region_new();
  match_t match(region);
  int const found = search_observed(ptrn_.ticking_regex(), begin, end, begin + 2 * first, end,
                                    region, watch, retries_);
  if (OnigUChar const* const stop = watch.stopped_at(); found < 0 && stop) {
    first = static_cast<std::size_t>(stop - begin) / 2;
    return first <= last ? search_state::more : search_state::not_found;
  }
  if (gave_up(found)) return search_state::gave_up;
  if (found < 0 || static_cast<std::size_t>(found) / 2 > last) return search_state::not_found;
  match_ = match;
  return search_state::found;
}

bool sliced_search::may_begin_within(std::size_t first, std::size_t last) const {
  OnigUChar const* const begin = bytes(text_.data());
  OnigUChar const* const end = begin + 2 * text_.size();
  OnigUChar const* const range = std::min(begin + 2 * last + 2, end);
  scout nobody;
  return search_observed(ptrn_.ticking_regex(), begin, end, begin + 2 * first, range, nullptr,
                         nobody, 0) != ONIG_MISMATCH;
}

void sliced_search::next_block() {
  block_ = block_at_ = last_ - first_ > block_size_ ? last_ - block_size_ : first_;
  block_size_ *= 2;
  in_block_ = true;
}

search_state sliced_search::step_backward() {
  auto const until = clock::now() + slice;
  do {
    bool const is_new = !in_block_;
    if (is_new) next_block();
    search_state found = search_state::not_found;
    if (!is_new || may_begin_within(block_, last_)) found = run(block_at_, last_);
    if (found == search_state::gave_up) return found;
    if (found == search_state::found) {
      // The last one so far; the next may begin within it.
      block_at_ = static_cast<std::size_t>(match_.begin(0)) + 1;
      if (text_.splits_pair(block_at_)) ++block_at_;
      if (block_at_ > last_) return search_state::found;
    } else if (found == search_state::not_found) {
      if (match_) return search_state::found;
      if (block_ == first_) return search_state::not_found;
      last_ = block_ - 1;
      in_block_ = false;
    }
  } while (clock::now() < until);
  return search_state::more;
}

sliced_find_all::sliced_find_all(regex::valid_text const& text, ptrn_t const& ptrn,
                                 std::size_t first, std::size_t last, unsigned long retries)
    : text_(text), ptrn_(ptrn), last_(last), retries_(retries) {
  search_.emplace(text, ptrn, first, last, direction::forward, retries);
}

search_state sliced_find_all::step() {
  auto const until = clock::now() + sliced_search::slice;
  do {
    search_state const state = search_->step();
    if (state == search_state::more) continue;
    if (state != search_state::found) return state;
    match_t const found = search_->match();
    result_.push_back(captures_of(found));
    auto next = static_cast<std::size_t>(found.end(0));
    if (found.begin(0) == found.end(0)) ++next;
    // Beyond the last place to begin at, the new search answers that there is nothing.
    search_.emplace(text_, ptrn_, next, last_, direction::forward, retries_);
  } while (clock::now() < until);
  return search_state::more;
}

}  // namespace oniguruma
