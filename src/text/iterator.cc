#include "text/iterator.h"

#include <algorithm>

#include "text/storage.h"

namespace text {

iterator iterator::operator+(std::ptrdiff_t n) const {
  iterator it = *this;
  if (n >= 0) {
    auto remaining = static_cast<size_t>(n);
    for (size_t left; remaining > (left = storage->size(it.line) - it.column);) {
      remaining -= left + 1;
      ++it.line;
      it.column = 0;
    }
    it.column += static_cast<uint32_t>(remaining);
  } else {
    auto remaining = static_cast<size_t>(-n);
    while (remaining > it.column) {
      remaining -= it.column + size_t{1};
      --it.line;
      it.column = static_cast<uint32_t>(storage->size(it.line));
    }
    it.column -= static_cast<uint32_t>(remaining);
  }
  return it;
}

std::ptrdiff_t iterator::operator-(iterator const& other) const {
  auto distance = static_cast<std::ptrdiff_t>(column) - static_cast<std::ptrdiff_t>(other.column);
  for (size_t at = other.line; at < line; ++at)
    distance += static_cast<std::ptrdiff_t>(storage->size(at)) + 1;
  return distance;
}

char_t* copy_units(iterator const& first, iterator const& last, char_t* out) {
  text::storage const* storage = first.storage;
  size_t column = first.column;
  for (size_t line = first.line; line < last.line; ++line, column = 0) {
    unit_view const units = storage->line_units(line).substr(column);
    out = std::copy(units.begin(), units.end(), out);
    *out++ = u'\n';
  }
  char_t const* const begin = storage->begin(last.line);
  return std::copy(begin + column, begin + last.column, out);
}

void append_units(iterator const& first, iterator const& last, std::vector<char_t>& out) {
  size_t const size = out.size();
  out.resize(size + static_cast<size_t>(last - first));
  copy_units(first, last, out.data() + size);
}

}  // namespace text
