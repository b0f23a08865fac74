#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <vector>

#include "regex/oniguruma.h"

namespace oniguruma {

enum class search_state {
  more,       ///< the slice is over, the search isn't
  found,      ///< and `match()` says where
  not_found,  ///< from a `sliced_find_all`: all has been found
  gave_up     ///< a limit ended it: there may be a match
};

enum class direction { forward, backward };

/// A search that comes back every few milliseconds, for callers that have a clock, a progress
/// indicator or a cancel button:
///
///     oniguruma::sliced_search search(text, ptrn, 0, text.size());
///     search_state state;
///     while ((state = search.step()) == search_state::more)
///       if (cancelled) return;
///
/// Every attempt to match sees all of the text, and the result is that of a search in one go. Two
/// things are not sliced: a single attempt, which has the limits of regex/onig_library.h or the
/// caller's, and the way to the next place where a match can begin (some ms a million units; the
/// slice is longer then, so that most of the time is not spent on the way).
///
/// How: the pattern is compiled a second time, with a callout of ours at its start, which Oniguruma
/// calls before each attempt and which can end the search. That can cost as much as the attempt
/// itself. A pattern that stays in its line needs no call: some short lines at a time are searched
/// as if the text ended there.
///
/// Text and pattern are borrowed. Any thread; one at a time.
class sliced_search {
 public:
  static constexpr std::chrono::milliseconds slice{4};

  /// Forward the first match that begins in [first, last] (both included), backward the last one.
  /// `retries` limits how often one attempt may go back, 0 for the limit all patterns have.
  sliced_search(regex::valid_text const& text, ptrn_t const& ptrn, std::size_t first,
                std::size_t last, direction where = direction::forward, unsigned long retries = 0);

  /// Goes on for a slice. What it answers but `more` is final.
  search_state step();
  /// Once found.
  match_t const& match() const { return match_; }

 private:
  search_state step_backward();
  void next_block();
  search_state run(std::size_t& first, std::size_t last);
  search_state run_watched(std::size_t& first, std::size_t last);
  search_state run_by_lines(std::size_t& first, std::size_t last, std::size_t until);
  std::size_t end_of_lines(std::size_t first);
  search_state search_plainly(std::size_t first, std::size_t last, std::size_t end,
                              unsigned long retries);
  search_state run_at_once(std::size_t first, std::size_t last);
  bool may_begin_within(std::size_t first, std::size_t last) const;

  regex::valid_text const& text_;
  ptrn_t const& ptrn_;
  std::size_t first_, last_;  // where the match may begin; shrinks
  direction where_;
  unsigned long retries_;
  search_state state_ = search_state::more;
  match_t match_;

  std::size_t lines_size_ = 64;    // of the whole lines that are searched at once; grows
  std::size_t watched_until_ = 0;  // lines before this take too long for that

  // Backward the text is searched in growing blocks, each forward from `block_` to `last_`.
  bool in_block_ = false;
  std::size_t block_ = 0, block_at_ = 0, block_size_ = 32;
};

/// `find_all` in slices. `step` answers `not_found` at the end of the text.
class sliced_find_all {
 public:
  /// Matches that begin in [first, last].
  sliced_find_all(regex::valid_text const& text, ptrn_t const& ptrn, std::size_t first,
                  std::size_t last, unsigned long retries = 0);

  search_state step();
  /// What has been found so far.
  std::vector<captures_t>& result() { return result_; }

 private:
  regex::valid_text const& text_;
  ptrn_t const& ptrn_;
  std::size_t last_;
  unsigned long retries_;
  std::optional<sliced_search> search_;  // for the next match
  std::vector<captures_t> result_;
};

}  // namespace oniguruma
