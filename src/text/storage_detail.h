#pragma once

#include <limits>
#include <list>
#include <optional>
#include <string>
#include <vector>

#include "text/shared_buffer.h"
#include "text/storage_observer.h"
#include "text/text_block.h"
#include "text/wanted_mutex.h"

namespace text {

/// The line store of a storage, known as `storage::detail`: a vector with one handle a line, and
/// the observers that are notified of each change. There is no index by offset, no gap and no tree:
/// a line is found by its subscript, an edit costs the length of the lines it touches, and
/// splitting or joining lines moves handles.
///
/// A line holds its units without a terminator. Lines are separated by an implied `\n`, so there is
/// always at least one. A carriage return is a unit like any other.
class storage_detail {
 public:
  /// Texts of at least this many units (64 KiB) are not copied into lines: the lines are slices of
  /// the block in which the text came, until they are edited.
  static constexpr size_t borrowed_length = 32768;

  /// The most units that a text can have, line ends counted: lengths are passed as int.
  static constexpr size_t max_length = std::numeric_limits<int>::max();

  using line_buffer = shared_buffer<char_t>;
  using observer_list = std::list<storage_observer*>;
  using observer_id = observer_list::iterator;

  explicit storage_detail(size_t lines) : data(lines) {}
  storage_detail(storage_detail const&) = delete;
  storage_detail& operator=(storage_detail const&) = delete;

  size_t size(size_t line) const { return data[line].size(); }
  /// Of the whole text in units, line ends counted.
  size_t length() const { return length_; }
  /// Pointers to the line's units, good until the next change of the text.
  char_t const* begin(size_t line) const { return data[line].data(); }
  char_t const* end(size_t line) const { return begin(line) + size(line); }
  char_t const* line_iter(text::iterator const& it) const { return begin(it.line) + it.column; }
  unit_view line_units(size_t line) const { return {begin(line), size(line)}; }
  /// A copy of the whole text.
  std::u16string whole_text() const;

  /// Observers are notified in the order in which they were added. The id is the list entry, which
  /// its holder may erase from `observers` directly.
  observer_id add_observer(storage_observer* observer);
  void remove_observer(storage_observer* observer);

  /// Puts the units of `slice` at `pos` and notifies the observers, under the lock. Returns the
  /// position after the new text. Throws std::bad_alloc, with all as it was, for a text of more
  /// than `max_length`.
  text::iterator insert(text::iterator const& pos, text_slice const& slice);
  /// Takes the text from `first` up to `last` away and notifies the observers, under the lock.
  void erase(text::iterator const& first, text::iterator const& last);
  /// Exchanges a stretch of text and notifies the observers, under the lock.
  void replace(text::iterator const& first, text::iterator const& last, replacement const& what);

  /// The text from `first` up to `last`, if its lines are slices of one block in which they follow
  /// each other.
  std::optional<text_slice> borrowed_text(text::pos first, text::pos last) const;

  std::vector<line_buffer> data;
  observer_list observers;
  /// Held by each change from before `will_insert` or `will_erase` until after `did_insert` or
  /// `did_erase`; readers on other threads, and drawing take it to read.
  mutable wanted_mutex mutex;

 private:
  void insert_lines(size_t line, size_t column, unit_view units, size_t newlines);
  void borrow_lines(size_t line, size_t column, text_slice const& slice, size_t newlines);
  void join_lines(text::iterator const& first, text::iterator const& last);
  /// A line whose units are about to change. A borrowed line that is all but the whole of a large
  /// block, which nothing else holds, takes the block's memory over: copying 100 MB takes too long
  /// for a key press.
  line_buffer& line_to_edit(size_t line);
  /// The block of which borrowed units are part.
  std::vector<text_block>::iterator block_holding(unit_view units);
  /// Keeps a block until no line is part of it. Drops those that no line of `data` is part of now.
  void keep_block(text_block const& block);
  void drop_unused_blocks();

  std::vector<text_block> blocks_;  ///< what the borrowed lines are slices of
  size_t length_ = 0;
  size_t sweep_at_ = 8;  ///< number of blocks at which unused ones are looked for
};

}  // namespace text
