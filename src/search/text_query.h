#pragma once

#include "regex/literal_search.h"
#include "regex/oniguruma.h"
#include "regex/valid_text.h"
#include "text/char_types.h"

#include <atomic>
#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace search {

/// How what a person looks for is meant.
struct query_options {
  bool regular_expression = false, ignore_case = false;
  /// Only matches at whose ends no word continues. Of a pattern the first match at each place
  /// counts, though a shorter one might end with a word.
  bool whole_words = false;

  friend bool operator==(query_options const&, query_options const&) = default;
};

/// What a person looks for: a text as it stands, or a pattern. Unchanging; any thread.
class text_query {
 public:
  /// `sought` must not be empty. Throws std::invalid_argument for a bad pattern.
  text_query(std::u16string_view sought, query_options options);

  oniguruma::ptrn_t const* pattern() const { return pattern_ ? &*pattern_ : nullptr; }
  /// When there is no pattern.
  regex::literal_search const& literal() const { return *literal_; }
  bool whole_words() const { return whole_words_; }

  /// Oniguruma's words for what is wrong, without the pattern.
  static std::string message_of(std::exception const& error);
  /// The unit of a bad pattern at which it goes wrong: what is never closed, or else the end of the
  /// shortest part that is wrong for the same reason as the whole.
  static std::size_t error_offset(std::u16string_view pattern);

 private:
  std::optional<oniguruma::ptrn_t> pattern_;
  std::optional<regex::literal_search> literal_;
  bool whole_words_;
};

/// Whether letters, digits or underscores stand at both sides of a place.
bool is_within_word(text::unit_view text, std::size_t at);

enum class search_end {
  found,
  not_found,
  gave_up,   // a limit of the library ended it: there may be a match
  cancelled  // by the user
};

/// One search, or a series, in one text. Looks at `cancelled` and the clock every few milliseconds,
/// but not in the midst of an attempt to match at one place. Query and text are borrowed. Any
/// thread, one at a time.
class text_searcher {
 public:
  text_searcher(text_query const& query, text::unit_view text, std::atomic<bool> const& cancelled);

  /// For those who cannot wait: from `deadline` on a search is given up, and an attempt to match
  /// may go back only `retries` times.
  void set_limits(std::chrono::steady_clock::time_point deadline, unsigned long retries);

  /// The first match from `first` on, or the last one before `last`. A text as it stands lies whole
  /// in the range; a pattern's match begins in it, `last` included going forward.
  search_end next(std::size_t first, std::size_t last);
  search_end previous(std::size_t first, std::size_t last);

  /// Of the match last found, in units.
  std::size_t begin() const { return begin_; }
  std::size_t end() const { return end_; }
  /// The groups, if it was a pattern's.
  oniguruma::match_t const& match() const { return match_; }

 private:
  search_end next_of_any(std::size_t first, std::size_t last);
  search_end previous_of_any(std::size_t first, std::size_t last);
  bool is_wanted() const;
  search_end run(std::size_t first, std::size_t last, bool backward);
  search_end next_literal(std::size_t first, std::size_t last);
  search_end previous_literal(std::size_t first, std::size_t last);
  bool took(char16_t const* found, char16_t const* none);
  /// What ends the search here, or `found` if it continues.
  search_end interrupted() const;

  text_query const& query_;
  text::unit_view text_;
  std::atomic<bool> const& cancelled_;
  std::optional<regex::valid_text> valid_;
  std::size_t begin_ = 0, end_ = 0;
  oniguruma::match_t match_;
  std::optional<std::chrono::steady_clock::time_point> deadline_;
  unsigned long retries_ = 0;
};

}  // namespace search
