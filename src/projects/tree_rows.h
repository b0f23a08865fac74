#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "projects/project_item.h"

namespace projects {

/// A tree as rows from top to bottom: what is in an open folder or group follows it. Rows are found
/// in a time that doesn't grow with the number of items that aren't open, and take no memory; after
/// a change the items of what is open are looked at once.
///
/// Main thread only.
class tree_rows {
 public:
  /// The list must outlive it.
  explicit tree_rows(item_list const& roots) : roots_(roots) {}

  /// Items have come, gone, been opened or closed. No item that was given before may be used.
  void invalidate() { is_valid_ = false; }
  bool is_valid() const { return is_valid_; }

  struct place {
    project_item* item = nullptr;
    std::size_t depth = 0;  ///< of the roots 0
  };
  std::size_t count() { return top().rows; }
  /// `row` is less than count().
  place at(std::size_t row);
  /// The item must be in the tree. Nothing for one in something closed.
  std::optional<std::size_t> row_of(project_item const& item);
  /// The rows of all that is in the item, whose row is given.
  std::size_t count_below(std::size_t row);
  /// In their order, those that were selected or pinned when the rows became valid.
  std::vector<project_item*> const& marked() { return top(), marked_; }

 private:
  struct branch;
  struct opened {
    std::size_t index = 0, row = 0;  // of the folder, in the branch
    std::unique_ptr<branch> below;
  };
  struct branch {
    item_list const* items = nullptr;
    std::vector<opened> open;
    std::size_t rows = 0;
  };

  branch& top();
  std::unique_ptr<branch> branch_of(item_list const& items);
  static std::size_t row_in(branch const& branch, std::size_t index);

  item_list const& roots_;
  bool is_valid_ = false;
  std::unique_ptr<branch> top_;
  std::vector<project_item*> marked_;
};

}  // namespace projects
