#include "documents/replace_text.h"

#include <algorithm>

namespace documents {
namespace {

/// Lines of a storage, and the units that are to take their place.
struct difference {
  std::size_t first_line = 0, last_line = 0;  ///< both included
  text::unit_view units;
};

bool begins_with_line(text::unit_view units, text::unit_view line) {
  return units.size() > line.size() && units[line.size()] == u'\n' && units.starts_with(line);
}

bool ends_with_line(text::unit_view units, text::unit_view line) {
  return units.size() > line.size() && units[units.size() - line.size() - 1] == u'\n' &&
         units.ends_with(line);
}

difference difference_of(text::storage const& storage, text::unit_view units) {
  auto const line = [&](std::size_t n) {
    return text::unit_view(storage.begin(n), storage.size(n));
  };
  difference result{0, storage.lines() - 1, units};
  while (result.first_line < result.last_line &&
         begins_with_line(result.units, line(result.first_line)))
    result.units.remove_prefix(storage.size(result.first_line++) + 1);
  while (result.last_line > result.first_line &&
         ends_with_line(result.units, line(result.last_line)))
    result.units.remove_suffix(storage.size(result.last_line--) + 1);
  return result;
}

}  // namespace

void replace_text(text::storage& storage, text::text_block const& units) {
  text::undo_group group(storage.undo_manager);
  difference const changed = difference_of(storage, units.view());
  if (changed.units.size() == units.size()) {  // then the lines can share the block
    storage.clear();
    storage.insert(storage.end(-1), units);
    return;
  }
  auto const first = storage.begin_of_line(changed.first_line);
  storage.erase(first, storage.end(changed.last_line));
  storage.insert(storage.begin_of_line(changed.first_line), changed.units.begin(),
                 changed.units.end());
}

}  // namespace documents
