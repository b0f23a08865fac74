#include "text/views/line_marks.h"

#include <algorithm>

namespace text {

namespace {

constexpr size_t no_column = 0xffff'ffff;

}  // namespace

// Has all up to `after`, which it includes, in the upper part.
void line_marks::move_gap(pos after) {
  for (; !above_.empty() && above_.back() > after; above_.pop_back())
    below_.push_back(stored(above_.back()));
  for (; !below_.empty() && actual(below_.back()) <= after; below_.pop_back())
    above_.push_back(actual(below_.back()));
}

std::optional<pos> line_marks::next(size_t line) const {
  if (above_.empty() || above_.back().line <= line) {
    auto const at = std::partition_point(below_.begin(), below_.end(),
                                         [&](pos each) { return actual(each).line > line; });
    return at == below_.begin() ? std::nullopt : std::optional(actual(*std::prev(at)));
  }
  return *std::partition_point(above_.begin(), above_.end(),
                               [&](pos each) { return each.line <= line; });
}

std::optional<pos> line_marks::previous(size_t line) const {
  if (below_.empty() || actual(below_.back()).line >= line) {
    auto const at = std::partition_point(above_.begin(), above_.end(),
                                         [&](pos each) { return each.line < line; });
    return at == above_.begin() ? std::nullopt : std::optional(*std::prev(at));
  }
  return actual(*std::partition_point(below_.begin(), below_.end(),
                                      [&](pos each) { return actual(each).line >= line; }));
}

std::optional<pos> line_marks::find(size_t line) const {
  std::optional<pos> const found = previous(line + 1);
  return found && found->line == line ? found : std::nullopt;
}

std::vector<pos> line_marks::list() const {
  std::vector<pos> result = above_;
  for (auto each = below_.rbegin(); each != below_.rend(); ++each) result.push_back(actual(*each));
  return result;
}

void line_marks::set(pos at) {
  if (contains(at.line)) return;
  move_gap(at);
  above_.push_back(at);
}

void line_marks::remove(size_t line) {
  if (!contains(line)) return;
  move_gap({line, no_column});
  above_.pop_back();
}

void line_marks::clear() {
  above_.clear();
  below_.clear();
}

// The gap is then right after it.
pos* line_marks::on_line(size_t line) {
  if (!contains(line)) return nullptr;
  move_gap({line, no_column});
  return &above_.back();
}

void line_marks::did_insert(pos first, pos last) {
  if (empty() || first == last) return;
  if (first.line == last.line) {
    pos* const mark = on_line(first.line);
    if (mark != nullptr && mark->column > first.column) mark->column += last.column - first.column;
    return;
  }
  move_gap(first);
  if (!below_.empty() && actual(below_.back()).line == first.line)
    below_.back().column += last.column - first.column;
  moved_ += last.line - first.line;
}

void line_marks::did_erase(pos first, pos last) {
  if (empty() || first == last) return;
  if (first.line == last.line) {
    pos* const mark = on_line(first.line);
    if (mark == nullptr || mark->column <= first.column) return;
    mark->column =
        mark->column >= last.column ? mark->column - last.column + first.column : first.column;
    return;
  }
  move_gap(first);
  bool is_taken = !above_.empty() && above_.back().line == first.line;
  bool was_inside = false;
  for (; !below_.empty() && actual(below_.back()) <= last; below_.pop_back()) was_inside = true;
  if (was_inside && !is_taken) {
    above_.push_back(first);
    is_taken = true;
  }
  if (!below_.empty() && actual(below_.back()).line == last.line) {
    if (is_taken)
      below_.pop_back();
    else
      below_.back().column += first.column - last.column;
  }
  moved_ -= last.line - first.line;
}

}  // namespace text
