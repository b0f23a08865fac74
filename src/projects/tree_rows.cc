#include "projects/tree_rows.h"

#include <algorithm>

namespace projects {

tree_rows::branch& tree_rows::top() {
  if (!is_valid_) {
    marked_.clear();
    top_ = branch_of(roots_);
    is_valid_ = true;
  }
  return *top_;
}

std::unique_ptr<tree_rows::branch> tree_rows::branch_of(item_list const& items) {
  auto made = std::make_unique<branch>();
  made->items = &items;
  for (std::size_t n = 0; n < items.size(); ++n) {
    project_item& item = *items[n];
    if (item.is_selected || item.is_pinned) marked_.push_back(&item);
    std::size_t const row = made->rows++;
    if (!item.is_expanded || item.children().empty()) continue;
    made->open.push_back({n, row, branch_of(item.children())});
    made->rows += made->open.back().below->rows;
  }
  return made;
}

tree_rows::place tree_rows::at(std::size_t row) {
  branch const* in = &top();
  for (std::size_t depth = 0;; ++depth) {
    auto next = std::upper_bound(in->open.begin(), in->open.end(), row,
                                 [](std::size_t r, opened const& o) { return r < o.row; });
    if (next == in->open.begin()) return {(*in->items)[row].get(), depth};
    opened const& last = *--next;
    std::size_t const offset = row - last.row;
    if (offset == 0) return {(*in->items)[last.index].get(), depth};
    if (offset > last.below->rows)
      return {(*in->items)[last.index + offset - last.below->rows].get(), depth};
    row = offset - 1;
    in = last.below.get();
  }
}

std::size_t tree_rows::row_in(branch const& in, std::size_t index) {
  auto next = std::lower_bound(in.open.begin(), in.open.end(), index,
                               [](opened const& o, std::size_t i) { return o.index < i; });
  if (next == in.open.begin()) return index;
  opened const& last = *--next;
  return last.row + last.below->rows + (index - last.index);
}

std::optional<std::size_t> tree_rows::row_of(project_item const& item) {
  std::vector<project_item const*> way;  // from the item up
  for (project_item const* at = &item; at != nullptr; at = at->parent()) way.push_back(at);
  branch const* in = &top();
  std::size_t row = 0;
  for (std::size_t n = way.size(); n-- > 0;) {
    auto const found = std::find_if(in->items->begin(), in->items->end(),
                                    [&](auto const& other) { return other.get() == way[n]; });
    if (found == in->items->end()) return std::nullopt;
    auto const index = static_cast<std::size_t>(found - in->items->begin());
    row += row_in(*in, index);
    if (n == 0) break;
    auto const open = std::lower_bound(in->open.begin(), in->open.end(), index,
                                       [](opened const& o, std::size_t i) { return o.index < i; });
    if (open == in->open.end() || open->index != index) return std::nullopt;
    in = open->below.get();
    ++row;
  }
  return row;
}

std::size_t tree_rows::count_below(std::size_t row) {
  std::size_t const depth = at(row).depth;
  branch const* in = &top();
  for (std::size_t level = 0;; ++level) {
    auto next = std::upper_bound(in->open.begin(), in->open.end(), row,
                                 [](std::size_t r, opened const& o) { return r < o.row; });
    if (next == in->open.begin()) return 0;
    opened const& last = *--next;
    if (level == depth) return last.row == row ? last.below->rows : 0;
    row -= last.row + 1;
    in = last.below.get();
  }
}

}  // namespace projects
