#include "text/views/bookmark_filter.h"

#include "text/replacement.h"

namespace text {

void view::bookmark_filter::set_bookmark(text::pos const& at, bool set) {
  if (set)
    marks.set(at);
  else
    marks.remove(at.line);
}

text::pos view::bookmark_filter::next_bookmark(size_t line) const {
  if (marks.empty()) return {line, 0};
  if (auto const after = marks.next(line)) return *after;
  return marks.find(0).value_or(marks.next(0).value_or(text::pos()));
}

text::pos view::bookmark_filter::previous_bookmark(size_t line) const {
  if (marks.empty()) return {line, 0};
  if (auto const before = marks.previous(line)) return *before;
  return *marks.previous(std::numeric_limits<uint32_t>::max());
}

void view::bookmark_filter::did_insert(text::pos const& first, text::pos const& last) {
  if (!replacing_) marks.did_insert(first, last);
  filter::did_insert(first, last);
}

void view::bookmark_filter::will_erase(text::pos const& first, text::pos const& last) {
  if (!replacing_) marks.did_erase(first, last);
  filter::will_erase(first, last);
}

// From the last range to the first, as one by one.
void view::bookmark_filter::will_replace(text::replacement const& what) {
  replacing_ = true;
  if (marks.empty()) return filter::will_replace(what);
  auto const edits = what.edits();
  for (auto edit = edits.rbegin(); edit != edits.rend(); ++edit) {
    marks.did_erase(edit->first, edit->last);
    marks.did_insert(edit->first, edit->new_last);
  }
  filter::will_replace(what);
}

void view::bookmark_filter::did_replace(text::replacement const& what) {
  replacing_ = false;
  filter::did_replace(what);
}

}  // namespace text
