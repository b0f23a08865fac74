#include "text/bookmark_filter.h"

#include <optional>
#include <utility>
#include <vector>

#include "text/replacement.h"

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
  if (replacing_) return filter::did_insert(first, last);
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
  if (replacing_) return filter::will_erase(first, last);
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

// From the last range to the first, as one by one. `behind` has the bookmarks behind the present
// range, the nearest last; their lines lack `lines_added`, so that a change moves all at once.
void view::bookmark_filter::will_replace(text::replacement const& what) {
  replacing_ = true;
  if (nodes.empty()) return filter::will_replace(what);
  std::vector<text::pos> behind;
  uint32_t lines_added = 0;
  auto const actual = [&](text::pos at) { return text::pos(at.line + lines_added, at.column); };
  auto const push = [&](text::pos at) { behind.emplace_back(at.line - lines_added, at.column); };
  auto const edits = what.edits();
  auto rest = nodes.end();
  for (auto edit = edits.rbegin(); edit != edits.rend(); ++edit) {
    while (rest != nodes.begin() && pos_of(*std::prev(rest)) > edit->last) push(pos_of(*--rest));
    std::optional<text::pos> on_line, inside;
    if (!behind.empty() && actual(behind.back()) == edit->last) {
      inside = edit->first;  // the next range has left it there
      behind.pop_back();
    }
    // On the line where the range ends stands one at most.
    if (!behind.empty() && actual(behind.back()).line == edit->last.line) {
      on_line = {edit->new_last.line,
                 actual(behind.back()).column - edit->last.column + edit->new_last.column};
      behind.pop_back();
    }
    while (rest != nodes.begin() && pos_of(*std::prev(rest)) > edit->first) {
      inside = edit->first;
      --rest;
    }
    bool const taken = rest != nodes.begin() && std::prev(rest)->first == edit->first.line;
    lines_added += edit->new_last.line - edit->last.line;
    if (on_line && !inside && !(taken && edit->first.line != edit->last.line)) push(*on_line);
    if (inside && !taken) push(*inside);
  }
  while (rest != nodes.begin()) push(pos_of(*--rest));
  std::map<size_t, size_t> moved;
  for (text::pos const at : behind) moved.emplace(actual(at).line, at.column);
  nodes.swap(moved);
  filter::will_replace(what);
}

void view::bookmark_filter::did_replace(text::replacement const& what) {
  replacing_ = false;
  filter::did_replace(what);
}

}  // namespace text
