#include "actions/movement.h"

namespace actions {
namespace {

text::view_iterator line_start(text::view_iterator const& it, size_t line) {
  return {it.view, text::iterator(line, 0, it.base.storage)};
}

text::view_iterator line_end(text::view_iterator const& it, size_t line) {
  return {it.view, it.base.storage->end(line)};
}

/// The next empty line after `line` that has a line end of its own; the number of lines when
/// there is none.
size_t separator_after(text::storage const& storage, size_t line) {
  size_t const lines = storage.lines();
  for (++line; line + 1 < lines; ++line)
    if (storage.size(line) == 0) return line;
  return lines;
}

}  // namespace

text::view_iterator to_beginning_of_hard_paragraph(text::view_iterator const& it) {
  return line_start(it, it.base.line);
}

text::view_iterator to_end_of_hard_paragraph(text::view_iterator const& it) {
  return line_end(it, it.base.line);
}

text::view_iterator to_beginning_of_paragraph(text::view_iterator const& it) {
  // The first line has no line end before it, so it separates nothing when it is empty.
  for (size_t line = it.base.line; line > 1; --line)
    if (it.base.storage->size(line - 1) == 0) return line_start(it, line);
  return line_start(it, 0);
}

text::view_iterator to_end_of_paragraph(text::view_iterator const& it) {
  size_t const line = separator_after(*it.base.storage, it.base.line);
  return line < it.base.storage->lines() ? line_start(it, line) : line_end(it, line);
}

text::view_iterator to_beginning_of_soft_paragraph(text::view_iterator const& it) {
  if (!it.view->soft_wrap) return to_beginning_of_paragraph(it);
  bool const leaves = it.base.column == 0 && it.base.line != 0;
  return line_start(it, leaves ? it.base.line - 1 : it.base.line);
}

text::view_iterator to_end_of_soft_paragraph(text::view_iterator const& it) {
  text::storage const& storage = *it.base.storage;
  if (it.view->soft_wrap) {
    bool const leaves = it.base.column == storage.size(it.base.line);
    return line_end(it, leaves ? it.base.line + 1 : it.base.line);
  }
  size_t const line = separator_after(storage, it.base.line);
  return line < storage.lines() ? line_start(it, line + 1) : line_end(it, line);
}

}  // namespace actions
