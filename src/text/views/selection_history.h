#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>

#include "text/views/selection.h"

namespace text {

/// A change of state: the memento before and the one after.
struct undo_key {
  uint32_t from = 0;
  uint32_t to = 0;

  auto operator<=>(undo_key const&) const = default;
};

/// The selections of a view that undo and redo bring back: for each step between neighbouring
/// states, in either direction, the one that stands after it. Of a state and the one that it was
/// made from, the later has the greater number and no other such neighbour; so that number and the
/// direction name a step, and the selections stand in tables by numbers.
class selection_history {
 public:
  /// Keeps the marks, not the text.
  void store(undo_key step, selection const& standing);
  bool contains(undo_key step) const;
  /// The marks are those of `view`; nothing for a step that isn't known.
  std::optional<selection> find(undo_key step, view const& view) const;
  /// A new state `to` was made from `from`: undo and redo lead to none of those between any more.
  void forget_between(uint32_t from, uint32_t to);

 private:
  struct mark {
    uint32_t line, column, offset, desired_column;
  };
  struct marks {
    mark first, last, current;
    bool column_mode = false, is_known = false;
  };
  static constexpr uint32_t page_states = 16;
  using page = std::array<std::array<marks, 2>, page_states>;

  static mark packed(view_iterator const& it);
  marks const* at(undo_key step) const;

  std::map<uint32_t, page> pages_;
};

}  // namespace text
