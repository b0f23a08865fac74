#include "text/moved_positions.h"

#include <algorithm>

namespace text {

moved_positions::moved_positions(std::vector<replacement::edit> edits) {
  edits_.reserve(edits.size());
  for (replacement::edit const& edit : edits) {
    text::pos const first = edits_.empty() ? edit.first : shifted(edit.first, edits_.back());
    uint32_t const lines = edit.new_last.line - edit.first.line;
    text::pos const last(
        first.line + lines,
        edit.new_last.column + (lines == 0 ? first.column - edit.first.column : 0));
    edits_.push_back({edit.first, edit.last, first, last});
  }
}

text::pos moved_positions::shifted(text::pos at, moved_edit const& before) {
  text::pos const from = before.last, to = before.new_last;
  return {at.line - from.line + to.line,
          at.line == from.line ? at.column - from.column + to.column : at.column};
}

text::pos moved_positions::staying(text::pos at) const {
  auto touching = std::partition_point(edits_.begin(), edits_.end(),
                                       [&](moved_edit const& edit) { return edit.last < at; });
  if (touching != edits_.end() && touching->first <= at) {
    // Where one edit follows another, what the first inserts comes after the position as well.
    while (touching != edits_.begin() && std::prev(touching)->last == touching->first) --touching;
    return touching->new_first;
  }
  return touching == edits_.begin() ? at : shifted(at, *std::prev(touching));
}

text::pos moved_positions::pushed(text::pos at) const {
  auto const after = std::partition_point(edits_.begin(), edits_.end(),
                                          [&](moved_edit const& edit) { return edit.first <= at; });
  if (after == edits_.begin()) return at;
  moved_edit const& edit = *std::prev(after);
  return at <= edit.last ? edit.new_last : shifted(at, edit);
}

}  // namespace text
