#pragma once

#include <concepts>
#include <deque>
#include <memory>
#include <variant>
#include <vector>

#include "text/repetition.h"
#include "text/replacement.h"
#include "text/storage_detail.h"
#include "text/undo_manager.h"
#include "text/unit_run.h"

namespace text {

/// What a change of many places is recorded as.
using many_edits = std::variant<replacement, repetition>;

enum class undo_type : uint8_t { insertion = 0, erasure = 1, many_edits = 2 };

/// The one mutable text buffer of a document: lines of units, a numbered history of all changes, a
/// kill buffer and observers. It knows nothing of selections, wrapping, encodings or line-ending
/// conventions.
///
///     text::storage storage;
///     text::iterator pos = storage.end(-1);
///     storage.insert(pos, units.begin(), units.end());   // pos now stands after the new text
///     storage.erase(storage.begin_of_line(0), pos);
///
/// A memento is the number of a state of the text. Every change draws a new number, undo and redo
/// bring the old ones back, so equal numbers mean equal text.
///
/// Changes are made on the main thread only. Nothing is reported and nothing is checked: `first`
/// must not lie after `last`, and columns must not exceed the size of their line. Allocation may
/// throw; an insertion for which there is no room, or that makes the text longer than `max_length`,
/// changes nothing.
struct storage : storage_detail {
  using detail = storage_detail;
  using observer = storage_observer;

  /// One change, as it was first done. Copies share `data`.
  struct undo_record {
    undo_type type = undo_type::insertion;
    uint32_t memento = 0;  ///< of the state before this change
    uint32_t line = 0;     ///< where the change starts
    uint32_t column = 0;
    uint32_t length = 0;                                 ///< in units, a line end counting as one
    text_block data;                                     ///< the units that were inserted or erased
    std::shared_ptr<text::many_edits const> edits = {};  ///< for that type, in place of `data`
  };

  /// What the last run of adjoining erasures took away, in the order of the erasures.
  struct kill_buffer_t {
    std::vector<char_t> data;
    uint32_t memento = 0;     ///< the state that the last erasure made; another one ends the run
    text::iterator position;  ///< where the last erasure was
    bool disabled = false;
  };

  /// A single empty line, in state 0.
  storage();

  /// The unit at a position, and `\n` at the end of any line, the last one included.
  char_t const& at(size_t line, size_t column) const {
    return column == size(line) ? eol : begin(line)[column];
  }

  text::iterator begin_of_line(size_t line) { return {line, 0, this}; }
  /// The end of the line, or of the last one when there are fewer; `end(-1)` is the document's end.
  /// (`begin(line)` is the pointer to the line's units; `line_units(line)` gives all of them.)
  text::iterator end(unsigned long line);
  bool empty() const { return data.size() == 1 && size(0) == 0; }
  size_t lines() const { return data.size(); }

  /// Inserts a sequence: pointers, iterators over units or wider characters (narrowed to a unit
  /// each), or text iterators of this or another storage. Returns the position after the new text,
  /// and moves `pos` there if it is a variable. An empty sequence changes nothing.
  template <typename First, typename Last>
  requires(!std::integral<First>) text::iterator
      insert(text::iterator& pos, First first, Last last) {
    return pos = insert_copy(pos, unit_run(first, last));
  }
  template <typename First, typename Last>
  requires(!std::integral<First>) text::iterator
      insert(text::iterator const& pos, First first, Last last) {
    return insert_copy(pos, unit_run(first, last));
  }
  /// Inserts `count` copies of `unit`.
  text::iterator insert(text::iterator const& pos, unsigned long count, char_t unit) {
    return insert(pos, text_block::fill(count, unit));
  }
  /// Inserts the text of a block without copying it: the lines and the undo record share the block.
  text::iterator insert(text::iterator const& pos, text_block const& block);

  void erase(text::iterator const& first, text::iterator const& last);
  /// Erases one unit.
  void erase(text::iterator const& it) { erase(it, it + 1); }
  /// Replaces many ranges as one change; `what.old_text` must be what stands from `what.first` on.
  /// Equals replacing them one by one from the last to the first, but that typing in columns ends.
  void replace(replacement what);
  /// Makes an edit that was made elsewhere at many places as well, as one change: for observers
  /// that repeat edits. The edits come in order and don't overlap; each takes `inserted` for what
  /// stands from its `first` to its `last`, and is given as in `replacement::edit`.
  void repeat(std::vector<replacement::edit> const& edits, unit_view inserted);
  /// Meanwhile, and nothing may repeat it.
  bool is_repeating() const { return repeating_; }
  /// The text from `first` up to `last` in one piece, without a copy where it stands in one.
  text_slice slice(text::iterator const& first, text::iterator const& last);
  /// Erases the whole text, as one erasure that can be undone.
  void clear();

  /// Step one record back or forward; there must be one. The text changes and observers are
  /// notified as by any change, but nothing is recorded and no number is drawn. `undo_manager`
  /// walks the user's steps.
  void undo();
  void redo();
  /// Drops the records that could be redone and appends one.
  void add_undo_record(undo_record const& record);
  /// Drops all records and the steps of the undo manager; groups that are open begin here. For text
  /// that was just loaded, whose insertion can't be undone: its record would keep a second copy
  /// from the first edit on.
  void forget_history();
  void will_change_memento(unsigned long to);
  void did_change_memento(unsigned long to);

  kill_buffer_t kill_buffer;
  std::deque<undo_record> undo_records;  ///< so that many are not moved when one is added
  uint32_t undo_index = 0;               ///< number of records that are applied
  uint32_t previous_memento = 0;
  uint32_t current_memento = 0;
  uint32_t next_memento = 1;
  text::undo_manager undo_manager;

 private:
  static constexpr char_t eol = u'\n';

  text::iterator insert_copy(text::iterator const& pos, unit_view units);
  void update_kill_buffer(text::iterator const& first, text::iterator const& last);
  void record(undo_type type, text::iterator const& at, text_block const& data);
  void record(text::pos first, size_t length, std::shared_ptr<text::many_edits const> edits);
  void apply(undo_record const& record, bool undoing);
  void exchange(replacement const& what);
  void exchange(many_edits const& edits, bool undoing);
  replacement replacement_of(std::vector<replacement::edit> const& edits, unit_view inserted);
  repetition repetition_of(std::vector<replacement::edit> const& edits, unit_view inserted);
  /// Makes a change that has been recorded. When it fails there is no record of it.
  template <typename Change>
  void make(Change change) {
    size_t const length_before = length();
    try {
      change();
    } catch (...) {
      if (length() != length_before)  // an observer has thrown, and the change is done
        did_change_memento(next_memento++);
      else if (undo_index != 0 && undo_index == undo_records.size())
        undo_records.resize(--undo_index);
      throw;
    }
    did_change_memento(next_memento++);
  }
  /// A call of its own, so that each observer is notified of one change at a time.
  void let_repeat();

  bool repeating_ = false;
};

/// A block holding a copy of a sequence, for an `undo_record`. A text iterator gives `\n` for each
/// line end.
template <typename First, typename Last>
text_block buffer_for_sequence(First first, Last last) {
  return text_block::copy(unit_run(first, last));
}
/// The same by whole lines, without a second copy.
text_block buffer_for_sequence(text::iterator first, text::iterator last);

inline iterator::reference iterator::operator*() const {
  return storage->at(line, column);
}

inline iterator& iterator::operator++() {
  if (column == storage->size(line)) {
    ++line;
    column = 0;
  } else {
    ++column;
  }
  return *this;
}

inline iterator& iterator::operator--() {
  if (column == 0) {
    --line;
    column = static_cast<uint32_t>(storage->size(line));
  } else {
    --column;
  }
  return *this;
}

inline iterator iterator::operator++(int) {
  iterator old = *this;
  ++*this;
  return old;
}

inline iterator iterator::operator--(int) {
  iterator old = *this;
  --*this;
  return old;
}

}  // namespace text
