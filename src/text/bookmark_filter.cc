#include "text/bookmark_filter.h"

#include <utility>

namespace text {

namespace {

text::pos pos_of(std::pair<size_t const, size_t> const& node) {
  return {node.first, node.second};
}

}  // namespace

void view::bookmark_filter::set_bookmark(size_t line, size_t column, bool set) {
  if (set)
    nodes.emplace(line, column);
  else
    nodes.erase(line);
}

text::pos view::bookmark_filter::next_bookmark(size_t line) const {
  if (nodes.empty()) return {line, 0};
  auto const behind = nodes.upper_bound(line);
  return pos_of(behind != nodes.end() ? *behind : *nodes.begin());
}

text::pos view::bookmark_filter::previous_bookmark(size_t line) const {
  if (nodes.empty()) return {line, 0};
  auto const here = nodes.lower_bound(line);
  return pos_of(here != nodes.begin() ? *std::prev(here) : *nodes.rbegin());
}

/// Of several bookmarks that come to stand on one line the first stays.
template <typename Move>
void view::bookmark_filter::rebuild(Move move) {
  std::map<size_t, size_t> moved;
  for (auto const& node : nodes) {
    text::pos const at = move(pos_of(node));
    moved.emplace_hint(moved.end(), at.line, at.column);
  }
  nodes.swap(moved);
}

void view::bookmark_filter::did_insert(text::pos const& first, text::pos const& last) {
  if (first.line != last.line && !nodes.empty()) {
    rebuild([&](text::pos at) {
      if (at <= first) return at;
      if (at.line == first.line)
        return text::pos(last.line, at.column - first.column + last.column);
      return text::pos(at.line - first.line + last.line, at.column);
    });
  } else if (auto const node = nodes.find(first.line); node != nodes.end()) {
    if (node->second > first.column) node->second += last.column - first.column;
  }
  filter::did_insert(first, last);
}

void view::bookmark_filter::will_erase(text::pos const& first, text::pos const& last) {
  if (first.line != last.line && !nodes.empty()) {
    rebuild([&](text::pos at) {
      if (at <= first) return at;
      if (at <= last) return first;
      if (at.line == last.line)
        return text::pos(first.line, at.column - last.column + first.column);
      return text::pos(at.line - last.line + first.line, at.column);
    });
  } else if (auto const node = nodes.find(first.line); node != nodes.end()) {
    if (node->second >= last.column)
      node->second -= last.column - first.column;
    else if (node->second > first.column)
      node->second = first.column;
  }
  filter::will_erase(first, last);
}

}  // namespace text
