#include "text/unit_offsets.h"

#include <algorithm>

namespace text {
namespace {

size_t distance(size_t a, size_t b) {
  return a < b ? b - a : a - b;
}

}  // namespace

void unit_offsets::go_to_end() {
  line_ = storage_.lines() - 1;
  offset_ = storage_.length() - storage_.size(line_);
}

void unit_offsets::go_to_line(size_t line) {
  size_t const from_here = distance(line, line_), from_end = storage_.lines() - 1 - line;
  if (line < from_here && line <= from_end)
    line_ = offset_ = 0;
  else if (from_end < from_here)
    go_to_end();
  while (line_ < line) step_down();
  while (line_ > line) step_up();
}

size_t unit_offsets::offset_of(text::pos at) {
  go_to_line(at.line);
  return offset_ + at.column;
}

text::iterator unit_offsets::position_of(size_t offset) {
  offset = std::min(offset, storage_.length());
  size_t const from_here = distance(offset, offset_), from_end = storage_.length() - offset;
  if (offset < from_here && offset <= from_end)
    line_ = offset_ = 0;
  else if (from_end < from_here)
    go_to_end();
  while (offset_ > offset) step_up();
  while (offset_ + storage_.size(line_) < offset) step_down();
  return {line_, offset - offset_, &storage_};
}

}  // namespace text
