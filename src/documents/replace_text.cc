#include "documents/replace_text.h"

#include <algorithm>

namespace documents {
namespace {

/// A part of a storage, up to the end of a line, and the units that are to take its place.
struct difference {
  text::pos first;
  std::size_t last_line = 0;
  text::unit_view units;
};

bool begins_with_line(text::unit_view units, text::unit_view line) {
  return units.size() > line.size() && units[line.size()] == u'\n' && units.starts_with(line);
}

bool ends_with_line(text::unit_view units, text::unit_view line) {
  return units.size() > line.size() && units[units.size() - line.size() - 1] == u'\n' &&
         units.ends_with(line);
}

difference difference_of(text::storage const& storage, text::unit_view units, text::pos first) {
  difference result{first, storage.lines() - 1, units};
  auto const rest_of_first = [&] {
    return storage.line_units(result.first.line).substr(result.first.column);
  };
  while (result.first.line < result.last_line && begins_with_line(result.units, rest_of_first())) {
    result.units.remove_prefix(rest_of_first().size() + 1);
    result.first = {result.first.line + std::size_t{1}, 0};
  }
  while (result.last_line > result.first.line &&
         ends_with_line(result.units, storage.line_units(result.last_line)))
    result.units.remove_suffix(storage.size(result.last_line--) + 1);
  return result;
}

/// A part of a block, without a copy.
text::text_block part_of(text::text_block const& block, text::unit_view units) {
  if (units.size() == block.size()) return block;
  return text::text_block::adopt(units.data(), units.size(), [held = block] {});
}

}  // namespace

void replace_text(text::storage& storage, text::text_block const& units, text::pos first) {
  difference const changed = difference_of(storage, units.view(), first);
  text::unit_view const last = storage.line_units(changed.last_line);
  if (changed.first.line == changed.last_line && last.substr(changed.first.column) == changed.units)
    return;
  text::undo_group group(storage.undo_manager);
  text::iterator const at(changed.first, &storage);
  storage.erase(at, storage.end(changed.last_line));
  storage.insert(at, part_of(units, changed.units));
}

}  // namespace documents
