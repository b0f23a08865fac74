#pragma once

#include "styles/typing_pairs.h"
#include "text/storage.h"

#include <cstddef>
#include <functional>

namespace layout {

/// Looks for the partner of a bracket, a slice at a time, so that a key never waits for a large
/// text. The text must not change meanwhile.
class bracket_search {
 public:
  /// Whether the bracket at a position counts: one of a text or comment is no partner of one of the
  /// code around it. Asked at each unit of the pair, with the storage's mutex as go_on() finds it.
  using belongs_function = std::function<bool(text::pos const&)>;
  enum class state { searching, found, none };

  /// From the bracket at a place, which is either unit of the pair.
  bracket_search(text::storage const& storage, text::pos const& at, styles::unit_pair pair,
                 belongs_function belongs);

  /// Goes on over so many units at most, of which a line end is one, and a unit of the pair some
  /// more, since it takes as long.
  state go_on(std::size_t units);
  /// When it has been found.
  text::pos const& partner() const { return at_; }
  /// Units passed so far, counted likewise.
  std::size_t passed() const { return passed_; }

 private:
  bool pass(text::char_t unit, std::size_t& units);
  bool search_line(std::size_t& units);
  bool to_next_line();

  text::storage const& storage_;
  text::pos at_;  // forward the next unit, backward the one passed last; the partner once found
  text::char_t own_, partner_;
  bool forward_;
  belongs_function belongs_;
  std::size_t depth_ = 1, passed_ = 0;
};

}  // namespace layout
