#include "text/views/column_cache.h"

#include <algorithm>
#include <utility>

#include "text/cluster.h"
#include "text/storage_detail.h"
#include "text/unit_search.h"

namespace text {

size_t column_cache::piece::end_column(size_t start, tab_stops tabs) const {
  size_t const tab = start + before;
  return has_tab ? tab + tab_width(tab, tabs) + rest : tab;
}

column_cache::piece column_cache::sum_up(unit_view units, tab_stops tabs) {
  char_t const* const last = units.data() + units.size();
  char_t const* const tab = find_unit(units.data(), last, u'\t');
  auto const length = static_cast<size_t>(tab - units.data());
  size_t const before = expanded_width(units.substr(0, length), 0, tabs);
  if (tab == last) return {units.size(), before, 0, false};
  return {units.size(), before, expanded_width(units.substr(length + 1), 0, tabs), true};
}

size_t column_cache::column(text::pos const& place, tab_stops tabs) {
  size_t const line = place.line, unit = place.column;
  unit_view const units = storage_.line_units(line);
  if (units.size() < long_line) return expanded_width(units.substr(0, unit), 0, tabs);
  size_t at = 0, start = 0;
  for (piece const& summed : find(line, tabs).pieces) {
    if (at + summed.units > unit) break;
    start = summed.end_column(start, tabs);
    at += summed.units;
  }
  return start + expanded_width(units.substr(at, unit - at), start, tabs);
}

unit_column column_cache::unit_at(hybrid_pos const& place, tab_stops tabs) {
  size_t const line = place.line, column = place.column;
  unit_view const units = storage_.line_units(line);
  if (units.size() < long_line) return unit_at_column(units, 0, column, tabs);
  size_t at = 0, start = 0, length = 0;
  for (piece const& summed : find(line, tabs).pieces) {
    length = summed.units;
    size_t const end = summed.end_column(start, tabs);
    if (end >= column) break;
    start = end;
    at += std::exchange(length, 0);
  }
  unit_column const found = unit_at_column(units.substr(at, length), start, column, tabs);
  return {at + found.unit, found.column, found.rest};
}

column_cache::entry const& column_cache::find(size_t line, tab_stops tabs) {
  auto found = std::find_if(entries_.begin(), entries_.end(), [&](entry const& cached) {
    return cached.line == line && cached.tab_size == tabs.every;
  });
  if (found == entries_.end()) {
    if (entries_.size() == max_entries) entries_.erase(entries_.begin());
    entries_.push_back(build(line, tabs));
  } else {
    std::rotate(found, found + 1, entries_.end());
  }
  return entries_.back();
}

column_cache::entry column_cache::build(size_t line, tab_stops tabs) const {
  entry made{line, tabs.every, {{storage_.size(line), 0, 0, false}}};
  sum_up_pieces(made, 0, 1, 0);
  return made;
}

void column_cache::sum_up_pieces(entry& cached, size_t first, size_t last, size_t start) const {
  unit_view const line = storage_.line_units(cached.line);
  auto const splits_cluster = [&](size_t at) {
    return at != 0 && at != line.size() && !unicode::surely_breaks(line, at);
  };
  while (first != 0 && splits_cluster(start)) start -= cached.pieces[--first].units;
  size_t length = 0;
  for (size_t i = first; i < last; ++i) length += cached.pieces[i].units;
  while (last != cached.pieces.size() && splits_cluster(start + length))
    length += cached.pieces[last++].units;

  unit_view units = line.substr(start, length);
  std::vector<piece> made;
  while (!units.empty()) {
    size_t taken = units.size() <= 2 * piece_length ? units.size() : piece_length;
    while (taken != units.size() && !unicode::surely_breaks(units, taken)) ++taken;
    made.push_back(sum_up(units.substr(0, taken), tab_stops(cached.tab_size)));
    units.remove_prefix(taken);
  }
  auto const begin = cached.pieces.begin() + static_cast<std::ptrdiff_t>(first);
  auto const end = cached.pieces.begin() + static_cast<std::ptrdiff_t>(last);
  auto const common = std::min(made.size(), last - first);
  auto const after = std::copy_n(made.begin(), common, begin);
  auto const rest = made.begin() + static_cast<std::ptrdiff_t>(common);
  cached.pieces.insert(cached.pieces.erase(after, end), rest, made.end());
}

void column_cache::did_insert(text::pos first, text::pos last) {
  uint32_t const lines = last.line - first.line;
  std::erase_if(entries_, [&](entry& cached) {
    if (cached.line > first.line) cached.line += lines;
    if (cached.line != first.line) return false;
    if (lines == 0) insert_into(cached, first.column, last.column - first.column);
    return lines != 0;
  });
}

void column_cache::will_erase(text::pos first, text::pos last) {
  erase_first_ = first;
  erase_last_ = last;
}

void column_cache::did_erase() {
  text::pos const first = erase_first_, last = erase_last_;
  std::erase_if(entries_, [&](entry& cached) {
    if (cached.line < first.line) return false;
    if (cached.line > last.line) {
      cached.line -= last.line - first.line;
      return false;
    }
    if (first.line == last.line) erase_from(cached, first.column, last.column - first.column);
    return first.line != last.line;
  });
}

void column_cache::insert_into(entry& cached, size_t column, size_t length) const {
  size_t index = 0, start = 0;
  while (index + 1 < cached.pieces.size() && start + cached.pieces[index].units < column)
    start += cached.pieces[index++].units;
  if (cached.pieces.empty()) cached.pieces.push_back({});
  cached.pieces[index].units += length;
  sum_up_pieces(cached, index, index + 1, start);
}

void column_cache::erase_from(entry& cached, size_t column, size_t length) const {
  size_t first = 0, start = 0;
  while (start + cached.pieces[first].units < column) start += cached.pieces[first++].units;
  size_t last = first;
  for (size_t at = column - start; length > 0; ++last, at = 0) {
    size_t const erased = std::min(length, cached.pieces[last].units - at);
    cached.pieces[last].units -= erased;
    length -= erased;
  }
  sum_up_pieces(cached, first, last, start);
}

}  // namespace text
