#include "text/views/soft_wrap_filter.h"

#include <algorithm>
#include <utility>

#include "text/cluster.h"
#include "text/tab_width.h"

namespace text {

/// A change, in the coordinates of the filter below: what stood from `first` up to `old_last` has
/// been replaced by what now stands from `first` up to `new_last`.
struct view::soft_wrap_filter::edit {
  text::pos first, old_last, new_last;
  size_t old_indent;  ///< of rows that continued the line of `first`

  size_t lines_added() const { return size_t{new_last.line} - old_last.line; }
  size_t units_added() const { return size_t{new_last.column} - old_last.column; }
  bool is_in_one_line() const { return first.line == old_last.line && first.line == new_last.line; }
};

/// Rows that take the place of those from `begin` up to `end`; rows up to `line_end` follow on the
/// same line.
struct view::soft_wrap_filter::wrapped_rows {
  size_t begin, end, line_end;
  line_ranges rows;
};

text::pos view::soft_wrap_filter::in_storage(text::pos const& at) const {
  line_range const& row = ranges[at.line];
  return {row.line, size_t{row.first} + at.column};
}

text::pos view::soft_wrap_filter::in_view(text::pos const& at) const {
  size_t const row = row_at(at);
  return {row, size_t{at.column} - ranges[row].first};
}

text::iterator view::soft_wrap_filter::begin(unsigned long row) const {
  return toward_storage->begin(ranges[row].line) + ranges[row].first;
}

text::iterator view::soft_wrap_filter::end(unsigned long row) const {
  return toward_storage->begin(ranges[row].line) + ranges[row].last;
}

/// The row that holds a position; the last one of its line for what is after that.
size_t view::soft_wrap_filter::row_at(text::pos const& at) const {
  auto const found = std::lower_bound(ranges.begin(), ranges.end(), at,
                                      [](line_range const& row, text::pos const& sought) {
                                        return text::pos(row.line, row.last) < sought;
                                      });
  bool const after = found == ranges.end() || found->line != at.line;
  return static_cast<size_t>(found - ranges.begin()) - (after && found != ranges.begin() ? 1 : 0);
}

size_t view::soft_wrap_filter::end_of_line(size_t line) const {
  auto const after =
      std::upper_bound(ranges.begin(), ranges.end(), line,
                       [](size_t sought, line_range const& row) { return sought < row.line; });
  return static_cast<size_t>(after - ranges.begin());
}

unit_view view::soft_wrap_filter::units_of(size_t line) const {
  text::iterator const at = toward_storage->begin(line);
  return view_.storage->line_units(at.line).substr(at.column);
}

/// The column at which rows begin that continue a line, which may be given in two parts.
size_t view::soft_wrap_filter::indent_of(unit_view line, unit_view rest) const {
  if (!view_.wraps_indented) return 0;
  size_t const most = view_.screen_width / 2;
  size_t column = 0;
  for (unit_view const part : {line, rest}) {
    for (char_t const unit : part) {
      if (!is_blank(unit) || column >= most) return std::min(column, most);
      column += unit == u'\t' ? tab_width(column, tab_stops(view_.tab_size)) : 1;
    }
  }
  return std::min(column, most);
}

/// Whether nothing but blanks stands before a position, as far as that matters.
bool view::soft_wrap_filter::may_change_indent(text::pos const& at) const {
  unit_view const before = units_of(at.line).substr(0, at.column);
  return before.substr(0, view_.screen_width).find_first_not_of(u" \t") == unit_view::npos;
}

/// The start of a row with unchanged text before it.
row_start view::soft_wrap_filter::start_of(size_t row) const {
  line_range const& range = ranges[row];
  if (range.first == 0) return {};
  line_range const& above = ranges[row - 1];
  // A soft break is at white space with something of the row before it.
  bool const hard =
      above.first == above.last || !is_lone_blank(units_of(range.line), range.first - 1);
  return {range.first, hard, indent_of(units_of(range.line))};
}

void view::soft_wrap_filter::reset() {
  ranges.clear();
  size_t const count = toward_storage->lines();
  ranges.reserve(count + count / 4);
  for (size_t line = 0; line < count; ++line) wrap_line(line, {}, ranges);
}

void view::soft_wrap_filter::add_row(size_t line, row_start start, size_t last, line_ranges& out) {
  out.push_back({static_cast<uint32_t>(line), static_cast<uint32_t>(start.unit),
                 static_cast<uint32_t>(last)});
}

void view::soft_wrap_filter::wrap_line(size_t line, row_start start, line_ranges& out) const {
  unit_view const units = units_of(line);
  size_t const indent = indent_of(units);
  while (auto const broken = find_row_break(units, start, view_.screen_width, view_.tab_size)) {
    add_row(line, start, broken->last, out);
    start = broken->next;
    start.column = indent;
  }
  add_row(line, start, units.size(), out);
}

/// Wraps the last line of a change until a row begins where an old one did, after the change and
/// by the same kind of break. Returns the index of that old row, or of the end of its line.
size_t view::soft_wrap_filter::wrap_up_to_old_rows(edit const& made, row_start start,
                                                   line_ranges& out) const {
  size_t const line = made.new_last.line;
  unit_view const units = units_of(line);
  size_t const old_end = end_of_line(made.old_last.line);
  size_t const indent = indent_of(units);
  size_t old = row_at(made.old_last) + 1;
  while (auto const broken = find_row_break(units, start, view_.screen_width, view_.tab_size)) {
    add_row(line, start, broken->last, out);
    start = broken->next;
    start.column = indent;
    // What is typed right before a blank may have taken that in, so that the old break is unknown.
    if (start.unit <= made.new_last.column + size_t{1}) continue;
    size_t const sought = start.unit - made.units_added();
    while (old < old_end && ranges[old].first < sought) ++old;
    if (old == old_end || ranges[old].first != sought) continue;
    bool const hard =
        ranges[old - 1].first == ranges[old - 1].last || !is_lone_blank(units, start.unit - 1);
    if (hard == start.hard) return old;
  }
  add_row(line, start, units.size(), out);
  return old_end;
}

/// Whether the table and the text have the sizes that a change says. They don't when a change was
/// hidden from here, or reported in part.
bool view::soft_wrap_filter::fits_the_text(edit const& made) const {
  auto const old_size = [&](size_t line) { return ranges[end_of_line(line) - 1].last; };
  size_t const rest = size_t{old_size(made.old_last.line)} - made.old_last.column;
  return made.first.column <= old_size(made.first.line) &&
         made.old_last.column <= old_size(made.old_last.line) &&
         units_of(made.new_last.line).size() == made.new_last.column + rest &&
         (made.first.line == made.new_last.line ||
          units_of(made.first.line).size() == made.first.column);
}

/// From where a change may have joined or parted clusters: that of the unit before it, and of the
/// one before that where a pair of surrogates was cut.
size_t view::soft_wrap_filter::first_changed_cluster(text::pos const& first) const {
  unit_view const units = units_of(first.line);
  size_t const at = first.column;
  if (at == 0 || is_plain(units[at - 1])) return at;
  return unicode::sure_break_before(units, at - std::min<size_t>(at, 2));
}

view::soft_wrap_filter::wrapped_rows view::soft_wrap_filter::wrap_again(edit const& made,
                                                                        bool whole_lines) const {
  wrapped_rows fresh{};
  fresh.line_end = end_of_line(made.old_last.line);
  // How the row above ends may depend on the changed row's first word; no other row's end does.
  fresh.begin = row_at({made.first.line, whole_lines ? 0 : first_changed_cluster(made.first)});
  if (!whole_lines && ranges[fresh.begin].first != 0) --fresh.begin;
  row_start start = start_of(fresh.begin);
  for (size_t line = made.first.line; line < made.new_last.line; ++line, start = {})
    wrap_line(line, start, fresh.rows);
  if (whole_lines) {
    wrap_line(made.new_last.line, start, fresh.rows);
    fresh.end = fresh.line_end;
  } else {
    fresh.end = wrap_up_to_old_rows(made, start, fresh.rows);
  }
  return fresh;
}

void view::soft_wrap_filter::replace_rows(edit const& made, wrapped_rows const& fresh) {
  auto const begin = ranges.begin() + static_cast<std::ptrdiff_t>(fresh.begin);
  auto const end = ranges.begin() + static_cast<std::ptrdiff_t>(fresh.end);
  for (auto row = end; row != ranges.begin() + static_cast<std::ptrdiff_t>(fresh.line_end); ++row) {
    row->first += static_cast<uint32_t>(made.units_added());
    row->last += static_cast<uint32_t>(made.units_added());
  }
  if (auto const added = static_cast<uint32_t>(made.lines_added()))
    for (auto row = end; row != ranges.end(); ++row) row->line += added;

  size_t const common = std::min(fresh.rows.size(), fresh.end - fresh.begin);
  auto const rest = fresh.rows.begin() + static_cast<std::ptrdiff_t>(common);
  auto const after = std::copy(fresh.rows.begin(), rest, begin);
  if (after != end)
    ranges.erase(after, end);
  else
    ranges.insert(after, rest, fresh.rows.end());
}

/// Whether rows that continue a line begin in another column now, or may do so.
bool view::soft_wrap_filter::moves_rows(edit const& made) const {
  if (!view_.wraps_indented) return false;
  if (!made.is_in_one_line()) return true;
  return may_change_indent(made.first) && indent_of(units_of(made.first.line)) != made.old_indent;
}

/// Whether each row is an old one, at most moved by what the change of row `changed` added.
bool view::soft_wrap_filter::keeps_layout(edit const& made, wrapped_rows const& fresh,
                                          size_t changed) const {
  bool const is_in_row =
      ranges[changed].first <= made.first.column && made.old_last.column <= ranges[changed].last;
  if (!made.is_in_one_line() || !is_in_row || fresh.rows.size() != fresh.end - fresh.begin)
    return false;
  auto const added = static_cast<uint32_t>(made.units_added());
  for (size_t row = fresh.begin; row < fresh.end; ++row) {
    line_range const& old = ranges[row];
    line_range const& now = fresh.rows[row - fresh.begin];
    if (now.first != old.first + (row > changed ? added : 0) ||
        now.last != old.last + (row >= changed ? added : 0))
      return false;
  }
  return true;
}

/// Whether the first row stays as it is, with the cluster at which it is broken, which is drawn
/// with it. There must be another old one on its line.
bool view::soft_wrap_filter::keeps_first_row(edit const& made, wrapped_rows const& fresh) const {
  line_range const& old = ranges[fresh.begin];
  line_range const& next = ranges[fresh.begin + 1];
  return fresh.rows.size() > 1 && fresh.rows[0].last == old.last &&
         fresh.rows[1].line == old.line && fresh.rows[1].first == next.first &&
         made.first.column >= next.first;
}

void view::soft_wrap_filter::apply(edit const& made) {
  size_t const changed = row_at(made.first);
  bool const moves = moves_rows(made);
  wrapped_rows const fresh = wrap_again(made, moves || !fits_the_text(made));
  bool const same_layout = !moves && keeps_layout(made, fresh, changed);
  bool const above_stays = !moves && fresh.begin < changed && keeps_first_row(made, fresh);
  replace_rows(made, fresh);
  if (toward_view == nullptr) return;
  if (same_layout) {
    toward_view->did_insert(in_view(made.first), in_view(made.new_last));
    return;
  }
  size_t const last = fresh.begin + fresh.rows.size() - 1;
  size_t const first = above_stays ? std::min(fresh.begin + 1, last) : fresh.begin;
  toward_view->will_erase({first, 0}, {fresh.end - 1, 0});
  toward_view->did_insert({first, 0}, {last, size(last)});
}

void view::soft_wrap_filter::did_insert(text::pos const& first, text::pos const& last) {
  size_t old_indent = 0;
  if (first.line == last.line) {
    unit_view const units = units_of(first.line);
    size_t const after = std::min<size_t>(last.column, units.size());
    old_indent = indent_of(units.substr(0, first.column), units.substr(after));
  }
  apply({first, first, last, old_indent});
}

void view::soft_wrap_filter::will_erase(text::pos const& first, text::pos const& last) {
  erase_first = first;
  erase_last = last;
  indent_before_erase = indent_of(units_of(first.line));
}

void view::soft_wrap_filter::did_erase(text::iterator const& pos, int length) {
  apply({erase_first, erase_last, erase_first, indent_before_erase});
  if (toward_view) toward_view->did_erase(pos, length);
}

}  // namespace text
