#pragma once

#include <vector>

#include "text/storage_observer.h"
#include "text/tab_width.h"
#include "text/views/cell_pos.h"

namespace text {

class storage_detail;

/// Converts between unit columns and visual columns of very long lines without measuring them from
/// the start each time. Results always equal the plain walk (`expanded_width`, `unit_at_column`).
///
/// A line is cut into pieces of some 16,384 units, between units of which each surely belongs to a
/// cluster of its own. What a piece adds to a column depends on the column at its start only up to
/// its first tab, so each piece is summed up once and independently of what stands before it: an
/// edit sums up the pieces it touches, and a question adds up one entry a piece and scans within
/// one. Lines below `long_line` are walked; a few long lines are
/// remembered.
///
/// The owner tells it of each change of the storage, before it is asked about the changed text:
/// `will_erase` before and `did_insert`, `did_erase` after. Main thread.
class column_cache {
 public:
  static constexpr size_t piece_length = 16384;
  static constexpr size_t long_line = 2 * piece_length;

  explicit column_cache(storage_detail const& storage) : storage_(storage) {}

  /// The visual column, counted from the line's start, of the unit at a position.
  size_t column(text::pos const& at, tab_stops tabs);
  /// The unit that covers the visual column, or the line's end, with the column where it stands.
  unit_column unit_at(hybrid_pos const& at, tab_stops tabs);

  void did_insert(text::pos first, text::pos last);
  void will_erase(text::pos first, text::pos last);
  void did_erase();
  void clear() { entries_.clear(); }

 private:
  struct piece {
    size_t units;
    size_t before;  ///< columns up to the first tab, or to the end
    size_t rest;    ///< columns after that tab, which ends at a known tab stop
    bool has_tab;

    size_t end_column(size_t start, tab_stops tabs) const;
  };
  struct entry {
    size_t line;
    size_t tab_size;
    std::vector<piece> pieces;
  };

  static constexpr size_t max_entries = 4;

  static piece sum_up(unit_view units, tab_stops tabs);
  entry const& find(size_t line, tab_stops tabs);
  entry build(size_t line, tab_stops tabs) const;
  void insert_into(entry& cached, size_t column, size_t length) const;
  void erase_from(entry& cached, size_t column, size_t length) const;
  /// Also those next to them that an edit may have joined to theirs in the middle of a cluster.
  void sum_up_pieces(entry& cached, size_t first, size_t last, size_t start) const;

  storage_detail const& storage_;
  std::vector<entry> entries_;  ///< the most recently used one last
  text::pos erase_first_;
  text::pos erase_last_;
};

}  // namespace text
