#pragma once

#include <compare>
#include <iterator>
#include <vector>

#include "text/char_types.h"
#include "text/pos.h"

namespace text {

struct storage;

/// A position in a storage: a plain value that walks the units of the whole text in both
/// directions, the end of each line counting as one unit `\n`. Valid columns of a line are 0 up to
/// its size, inclusive; reading at the end of the document gives `\n`.
///
/// A change of the text doesn't update iterators: what has to survive edits is kept in an
/// `iterator_observer`. Nothing is checked: an iterator is kept between 0,0 and the document's end.
/// To use the operators include "text/storage.h".
struct iterator {
  using iterator_category = std::bidirectional_iterator_tag;
  using value_type = char_t;
  using difference_type = std::ptrdiff_t;
  using pointer = char_t const*;
  using reference = char_t const&;

  uint32_t line = 0;
  uint32_t column = 0;
  text::storage* storage = nullptr;

  iterator() = default;
  iterator(size_t at_line, size_t at_column, text::storage* in_storage)
      : line(static_cast<uint32_t>(at_line)),
        column(static_cast<uint32_t>(at_column)),
        storage(in_storage) {}
  iterator(text::pos at, text::storage* in_storage)
      : line(at.line), column(at.column), storage(in_storage) {}

  text::pos pos() const { return {line, column}; }

  inline reference operator*() const;
  inline iterator& operator++();
  inline iterator& operator--();
  inline iterator operator++(int);
  inline iterator operator--(int);

  /// Moves by `n` units in time proportional to the lines crossed.
  iterator operator+(std::ptrdiff_t n) const;
  iterator operator-(std::ptrdiff_t n) const { return *this + -n; }
  iterator& operator+=(std::ptrdiff_t n) { return *this = *this + n; }
  iterator& operator-=(std::ptrdiff_t n) { return *this = *this + -n; }

  /// The number of units from `other` up to this position, after which `other` must not lie. Added
  /// up by line sizes, so it costs time in proportion to the lines between.
  std::ptrdiff_t operator-(iterator const& other) const;

  /// Position only: the storage is not compared.
  bool operator==(iterator const& other) const { return pos() == other.pos(); }
  std::strong_ordering operator<=>(iterator const& other) const { return pos() <=> other.pos(); }
};

/// Copies the units from `first` up to `last`, line by line, to `out`, which has room for
/// `last - first` of them. Returns the end of what was written.
char_t* copy_units(iterator const& first, iterator const& last, char_t* out);

/// Appends the units from `first` up to `last` to `out`.
void append_units(iterator const& first, iterator const& last, std::vector<char_t>& out);

}  // namespace text
