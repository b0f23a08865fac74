#pragma once

#include <atomic>
#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "regex/valid_text.h"

struct re_pattern_buffer;
struct re_registers;

/// Patterns of users and bundles over UTF-16 text, run by Oniguruma in the syntax of Ruby. All
/// offsets are code units. The text may hold lone surrogates, which a pattern sees as U+FFFD.
///
///     oniguruma::ptrn_t const ptrn(source.data(), source.data() + source.size(), 0);
///     if (auto m = oniguruma::find(text.data(), 0, text.size(), &ptrn)) use(m.begin(0), m.end(0));
///
/// Each attempt to match has limits (regex/onig_library.h), but a search makes an attempt at each
/// position: for long texts that a person waits for, see regex/sliced_search.h.
namespace oniguruma {

/// A compiled pattern and its source. Unchanging; any thread may search with it.
class ptrn_t {
 public:
  /// `options` are Oniguruma's. Throws std::invalid_argument, which says what is wrong with which
  /// pattern.
  ptrn_t(char16_t const* first, char16_t const* last, unsigned options);
  ~ptrn_t();
  ptrn_t(ptrn_t&&) noexcept;
  ptrn_t& operator=(ptrn_t&&) noexcept;

  bool operator==(ptrn_t const& other) const;

  /// Null after being moved from.
  re_pattern_buffer* regex() const { return regex_; }
  /// The pattern compiled for `sliced_search`, which is done when it is first asked for. Null for
  /// a pattern that may hold the anchor \G.
  re_pattern_buffer* ticking_regex() const;
  std::u16string_view source() const { return {source_.get(), length_}; }
  /// Whether neither a match nor what it looks at can lie on both sides of a newline.
  bool stays_in_line() const { return stays_in_line_; }

 private:
  re_pattern_buffer* regex_ = nullptr;
  std::unique_ptr<char16_t[]> source_;
  std::size_t length_ = 0;
  unsigned options_ = 0;
  bool stays_in_line_ = false;
  mutable std::atomic<re_pattern_buffer*> ticking_regex_ = nullptr;
};

/// The groups of one match: a counted handle that stays on one thread. False when nothing matched.
class match_t {
 public:
  match_t() = default;
  /// Takes the region over; null makes the empty handle.
  explicit match_t(re_registers* region);
  match_t(match_t const& other);
  match_t& operator=(match_t const& other);
  ~match_t() { release(); }

  /// The answer of a search that was broken off: there may be a match.
  static match_t broken_off();
  bool gave_up() const;

  explicit operator bool() const { return region() != nullptr; }
  /// One more than the number of the pattern's last group.
  std::size_t size() const;
  /// Whether the group took part in the match, be it with an empty text.
  bool is_set(std::size_t i) const;
  /// 0 for a group that took no part; -1 if there is no such group, or nothing matched.
  std::ptrdiff_t begin(std::size_t i) const;
  std::ptrdiff_t end(std::size_t i) const;

  void release();

 private:
  struct record {
    re_registers* region;
    std::size_t count;
  };
  static record broken_off_record;
  re_registers* region() const { return record_ ? record_->region : nullptr; }

  record* record_ = nullptr;
};

/// The first match in [from, to). What the matcher may look at is [0, text_end), or [0, to) when
/// `text_end` is negative; a match lies within [0, to) all the same. With `from` beyond `to` the
/// search goes backwards, and a match ends no further than one character after `from`. A null
/// pattern matches nothing.
match_t find(char16_t const* buffer, std::ptrdiff_t from, std::ptrdiff_t to, ptrn_t const* ptrn,
             unsigned options = 0, std::ptrdiff_t text_end = -1);

/// The same in a text that was made valid once, for many searches in one long text.
match_t find(regex::valid_text const& text, std::ptrdiff_t from, std::ptrdiff_t to,
             ptrn_t const* ptrn, unsigned options = 0);

/// The begin and end of each group that took part, by its number. A group that ends at offset 0 is
/// left out.
using captures_t = std::map<int, std::pair<int, int>>;

/// The captures of a match, by the same rule.
captures_t captures_of(match_t const& match);

/// Appends one map for each match in [first, last). The next search begins where a match ends, one
/// unit on if it was empty. False if the search was broken off; what is appended then is right as
/// far as it goes.
bool find_all(char16_t const* first, char16_t const* last, ptrn_t const& ptrn,
              std::vector<captures_t>& result);

}  // namespace oniguruma
