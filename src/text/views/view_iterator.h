#pragma once

#include <compare>

#include "text/storage.h"
#include "text/views/cell_pos.h"

namespace text {

class view;

/// What a conversion does with a position that falls inside a tab or after a line's end.
struct freehanded_t {
  enum type {
    on = 0,        ///< keep the remaining columns in `offset`
    off = 1,       ///< drop them
    automatic = 2  ///< keep them when the view is in freehanded mode
  };
};

/// A position in a view: one of the storage, and a number of virtual columns after it, inside the
/// tab at `base` or past the end of the line. Order and equality leave `desired_column` out.
struct view_iterator {
  using iterator_category = std::bidirectional_iterator_tag;
  using value_type = char_t;
  using difference_type = std::ptrdiff_t;
  using pointer = char_t const*;
  using reference = char_t const&;

  text::view const* view = nullptr;
  text::iterator base;
  uint32_t offset = 0;
  uint32_t desired_column = 0;  ///< what a vertical move aims at; 0 after any horizontal step

  view_iterator() = default;
  view_iterator(text::view const* in_view, text::iterator const& at, size_t virtual_columns = 0,
                size_t desired = 0)
      : view(in_view),
        base(at),
        offset(static_cast<uint32_t>(virtual_columns)),
        desired_column(static_cast<uint32_t>(desired)) {}

  /// The unit, and a space for a column inside a tab.
  reference operator*() const;
  /// Steps by clusters through the rows of the view: from the end of one to the beginning of the
  /// next. Nothing happens at the two ends of the document. Each step walks the filters, so long
  /// scans are done on `base`.
  view_iterator& operator++();
  view_iterator& operator--();
  view_iterator operator++(int) {
    view_iterator old = *this;
    ++*this;
    return old;
  }
  view_iterator operator--(int) {
    view_iterator old = *this;
    --*this;
    return old;
  }

  bool operator==(view_iterator const& other) const {
    return base == other.base && offset == other.offset;
  }
  std::strong_ordering operator<=>(view_iterator const& other) const {
    auto const order = base <=> other.base;
    return order != 0 ? order : offset <=> other.offset;
  }
};

/// The hybrid coordinates of a position: its line in the storage, and its visual column from the
/// start of that line with tabs expanded, unaffected by wrapping. Column selections work in these.
size_t line_before_filters(view_iterator const& it);
size_t column_before_wrap(view_iterator const& it);

/// The position at hybrid coordinates: before the character that covers the column. The line must
/// exist.
view_iterator iter_from_hybrid_pos(text::view const* view, hybrid_pos const& at,
                                   freehanded_t::type type);
/// The position at a row of the view (the last one if there are fewer) and a column of it. The
/// result aims at that column.
view_iterator iter_from_view_pos(text::view const* view, row_pos const& at,
                                 freehanded_t::type type);

/// A real position for `it`. Changes the text if it stands in virtual columns: spaces are appended
/// to the line, or the tab is replaced by `tab_size` spaces.
text::iterator make_base_iter(view_iterator it);

}  // namespace text
